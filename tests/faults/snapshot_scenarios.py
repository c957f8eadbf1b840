"""Hostile snapshot files in front of the snapshot browser, run in a child process: a crash or a
hang then fails its test instead of taking the test run with it.

The parent lays out the snapshot folder and the settings (the child inherits COBALTRIG_HOME), then
`run` starts a fresh interpreter that opens the browser and works on it as an artist would, and
prints what it was told and what it saw as one JSON line.
"""

import hashlib
import json
import os
import stat
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))


def tree(root):
    """Every path under root with its bytes' hash; "fifo", "link:..." or "dir" for the others
    (a pipe is never opened: that is what would hang)."""
    seen = {}
    for folder, dirs, files in os.walk(root):
        for name in dirs + files:
            path = os.path.join(folder, name)
            mode = os.lstat(path).st_mode
            if stat.S_ISLNK(mode):
                seen[path] = "link:" + os.readlink(path)
            elif stat.S_ISDIR(mode):
                seen[path] = "dir"
            elif not stat.S_ISREG(mode):
                seen[path] = "fifo"
            else:
                with open(path, "rb") as handle:
                    seen[path] = hashlib.sha256(handle.read()).hexdigest()
    return seen


def run(scenario, *args, timeout=60):
    """Runs `scenario` in a child; gives its outcome and console, or fails naming how it died."""
    env = dict(os.environ)
    env["PYTHONPATH"] = os.pathsep.join([HERE] + [p for p in [env.get("PYTHONPATH")] if p])
    code = "import sys, snapshot_scenarios as s; s.child(sys.argv[1], *sys.argv[2:])"
    try:
        result = subprocess.run([sys.executable, "-c", code, scenario] + [str(a) for a in args],
                                env=env, capture_output=True, text=True, timeout=timeout)
    except subprocess.TimeoutExpired as expired:
        raise AssertionError("the child hung for {} s:\n{}".format(timeout, expired.stderr))
    marker = result.stdout.rfind("OUTCOME ")
    if result.returncode != 0 or marker < 0:
        raise AssertionError("the child died ({}):\n{}\n{}".format(
            result.returncode, result.stdout[-2000:], result.stderr[-4000:]))
    outcome = json.loads(result.stdout[marker + len("OUTCOME "):])
    outcome["console"] = result.stderr
    return outcome


# --- the child's side ------------------------------------------------------------------------


def _settle():
    from cobaltRig.qt import QtCore, QtWidgets

    for _ in range(5):
        QtWidgets.QApplication.processEvents()
        QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)


def _rows(browser):
    """Each row's image, comment mark and flag mark, as the thumbnails show them."""
    rows = []
    for thumb in browser.get_thumbnails_list():
        if thumb is None:
            continue
        rows.append({"src": thumb.get_src(),
                     "comment": not thumb.label_comment.isHidden(),
                     "flag": not thumb.label_flag.isHidden()})
    return rows


def _attempt(told, step):
    try:
        return step()
    except Exception as error:  # what the host shows for a failed command
        told.append("{}: {}".format(type(error).__name__, error))
        return None


def child(scenario, *args):
    import nuke  # noqa: F401  (the simulated host makes the application)
    from cobaltRig import cobaltRig_w as rig
    from cobaltRig import helper
    from cobaltRig.qt import QtCore

    told = []
    helper.show_message_box = lambda parent, text: told.append(text)
    outcome = {"told": told}
    browser = rig.show_snapshot_browser()
    _settle()

    if scenario == "browse":
        # Open, read every row, then the comment editor and a flag on the snapshot named.
        src = args[0]
        browser.table_thumbs.scrollToBottom()
        _settle()
        outcome["rows"] = _rows(browser)
        editor = _attempt(told, lambda: rig.show_comment_window(src, browser))
        outcome["editor"] = None if editor is None else editor.text_comment.toPlainText()
        _attempt(told, lambda: helper.set_flag(browser, src, ["10", "20", "30"]))
        outcome["metadata"] = _attempt(told, lambda: helper.load_metadata(src))
    elif scenario == "replace-during-flush":
        # The window is replaced, and the old one deleted, while its flush question is open.
        def ask(title, message, process_label="ok", color_process=None):
            QtCore.QTimer.singleShot(0, rig.show_snapshot_browser)
            loop = QtCore.QEventLoop()
            QtCore.QTimer.singleShot(300, loop.quit)
            loop.exec_()
            _settle()
            return True

        helper.ask_dialog = ask
        thumb = browser.get_thumbnails_list()[0]
        thumb.show_right_click_menu()
        action = thumb.action_delete_all
        del thumb, browser
        action.trigger()
        _settle()
        outcome["rows"] = _rows(rig.snapshotbrowser)
    print("\nOUTCOME " + json.dumps(outcome))
    sys.stdout.flush()
