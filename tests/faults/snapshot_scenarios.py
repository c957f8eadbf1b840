"""The snapshot browser on hostile folders in a child process, so that a crash or a hang fails its
test instead of the test run. The child inherits the settings (COBALTRIG_HOME) the parent laid out,
works on the browser as an artist would, and prints what it was told and saw as one JSON line."""

import json
import os
import resource
import subprocess
import sys
import time

from fault_scenarios import outcome_of, snapshot as tree  # noqa: F401  (tree: for the tests)


def run(scenario, *args, timeout=60):
    """The child's outcome with its console; fails naming how the child died or that it hung."""
    here = os.path.dirname(os.path.abspath(__file__))
    env = dict(os.environ, PYTHONPATH=os.pathsep.join([here, os.environ.get("PYTHONPATH", "")]))
    code = "import sys, snapshot_scenarios as s; s.child(*sys.argv[1:])"
    try:
        result = subprocess.run([sys.executable, "-c", code, scenario] + list(args), env=env,
                                capture_output=True, text=True, timeout=timeout)
    except subprocess.TimeoutExpired as expired:
        raise AssertionError("the child hung for {} s:\n{}".format(timeout, expired.stderr))
    outcome = outcome_of(result, "the child died")
    outcome["console"] = [line for line in result.stderr.splitlines()
                          if line.startswith("cobaltRig")]
    return outcome


def _settle():
    from cobaltRig.qt import QtCore, QtWidgets

    for _ in range(5):
        QtWidgets.QApplication.processEvents()
        QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)


def _rows(browser):
    return [[t.get_src(), not t.label_comment.isHidden(), not t.label_flag.isHidden()]
            for t in browser.get_thumbnails_list() if t is not None]


def child(scenario, src=None):
    if scenario == "zoom" and "asan" not in os.environ.get("LD_PRELOAD", ""):
        # Guard the machine: a header that claims 14 GB could get them. Sanitizer builds reserve
        # address space of their own, so the guard is left to the timeout there.
        resource.setrlimit(resource.RLIMIT_AS, (3 << 30, 3 << 30))
    import nuke  # noqa: F401  (the simulated host makes the application)
    from cobaltRig import cobaltRig_w as rig
    from cobaltRig import helper
    from cobaltRig.qt import QtCore

    told = []
    helper.show_message_box = lambda parent, text: told.append(text)

    def attempt(step):
        try:
            return step()
        except Exception as error:  # what the host shows for a failed command
            told.append("{}: {}".format(type(error).__name__, error))

    start = time.monotonic()
    browser = rig.show_snapshot_browser()
    _settle()
    outcome = {"told": told}
    if scenario == "browse":  # every row, then the comment editor and a flag on `src`
        browser.table_thumbs.scrollToBottom()
        _settle()
        outcome["rows"] = _rows(browser)
        outcome["editor"] = bool(attempt(lambda: rig.show_comment_window(src, browser)))
        attempt(lambda: helper.set_flag(browser, src, ["10", "20", "30"]))
        outcome["metadata"] = attempt(lambda: helper.load_metadata(src))
    elif scenario == "replace-during-flush":  # the window replaced while its question is open
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
        del thumb, browser  # nothing of the old window is kept alive from here
        action.trigger()
        _settle()
        outcome["rows"] = _rows(rig.snapshotbrowser)
    elif scenario == "zoom":  # each row's tooltip and height, then each preview zoomed far in
        outcome["rows"] = [(t.get_src(), t.widget.toolTip(), browser.table_thumbs.rowHeight(i))
                           for i, t in enumerate(browser.get_thumbnails_list())]
        outcome["previews"] = []
        for path, _, _ in outcome["rows"]:
            browser.preview_image.set_image(path)
            for _ in range(20):
                browser.preview_image.zoom_in()
            _settle()
            outcome["previews"].append(browser.preview_image.image_label.toolTip())
        outcome["seconds"] = time.monotonic() - start
        outcome["peak_mb"] = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    print("\nOUTCOME " + json.dumps(outcome), flush=True)
