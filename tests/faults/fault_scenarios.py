"""Broken files put in front of the add-on's public entry points, here or in a child that file
modes bind: a scenario lays out a settings home with a pool, a snapshot and a preset, breaks one
kind of file one way, runs the entry points that read it, and gives what the user was told."""

import contextlib
import importlib
import io
import json
import os
import subprocess
import sys

KINDS = ("settings", "advanced", "hotkeys", "metadata", "image", "preset")
VARIANTS = ("missing", "empty", "truncated", "malformed", "non-utf8", "huge", "unreadable",
            "symlinked", "dangling", "directory")
HUGE = 10 * 1024 * 1024
# Where each kind's file lies under a scenario's root.
TARGETS = {"settings": ("home", "settings.xml"), "advanced": ("home", "advanced_settings.xml"),
           "hotkeys": ("home", "hotkeys.xml"), "metadata": ("shots", "shot_001.xml"),
           "image": ("shots", "shot_001.jpg"), "preset": ("pool", "nodes", "Blur", "soft.nk")}


def layout(root):
    """A settings home, a pool with one preset and a snapshot folder, all with good files."""
    from cobaltRig import helper

    os.environ["COBALTRIG_HOME"] = os.path.join(root, "home")
    pool = os.path.join(root, "pool")
    os.makedirs(os.path.join(pool, "nodes", "Blur"))
    os.makedirs(os.path.join(pool, "toolsets"))
    helper.save_pools({"main": pool})
    helper.update_xml("current_pool", "main")
    helper.parse_advanced_settings()
    helper.load_hotkeys()
    import nuke

    nuke.nodes.Blur(name="soft").setSelected(True)
    nuke.nodeCopy(os.path.join(pool, "nodes", "Blur", "soft.nk"))
    shots = os.path.join(root, "shots")
    os.makedirs(shots)
    image = os.path.join(shots, "shot_001.jpg")
    from cobaltRig.qt import QtGui

    picture = QtGui.QImage(64, 36, QtGui.QImage.Format_RGB32)
    picture.fill(0x336699)
    assert picture.save(image, "JPG")
    helper.create_metaxml(os.path.splitext(image)[0] + ".xml")
    helper.set_flag(None, image, ("255", "0", "0"))
    nuke.scriptClear()


def target(root, kind):
    return os.path.join(root, *TARGETS[kind])


def break_file(root, path, variant):
    """Puts the variant of the file in place; gives the bytes of the good file."""
    with open(path, "rb") as handle:
        good = handle.read()
    os.remove(path)
    if variant in ("symlinked", "dangling"):  # a team's shared file, or one on a folder now gone
        shared = os.path.join(root, "team", "gone" if variant == "dangling" else "",
                              os.path.basename(path))
        if variant == "symlinked":
            os.makedirs(os.path.dirname(shared), exist_ok=True)
            with open(shared, "wb") as handle:
                handle.write(good)
        os.symlink(shared, path)
    elif variant == "directory":
        os.makedirs(os.path.join(path, "inside"))
    elif variant != "missing":
        with open(path, "wb") as handle:
            handle.write(huge(good) if variant == "huge" else {
                "empty": b"",
                "truncated": good[: len(good) // 2],
                "malformed": b"<cobaltRig><settings><setting name='a'>1</settings></cobaltRig>\n",
                "non-utf8": good[:-40] + b"\xff\xfe caf\xe9 \x80\x81" + good[-40:],
                "unreadable": good,
            }[variant])
        if variant == "unreadable":
            os.chmod(path, 0)
    return good


def huge(good):
    """Ten megabytes that keep the good file's meaning where a format allows padding."""
    if good.startswith(b"<?xml"):
        end = good.rindex(b"</")
        pad = b"<!--" + b"x" * HUGE + b"-->"
        return good[:end] + pad + good[end:]
    if good.startswith(b"\xff\xd8"):
        return good + b"\0" * HUGE  # bytes after the end-of-image marker
    return good + b"\n#" + b"x" * HUGE + b"\n"


def exercise(root, kind):
    """Runs the entry points that read files of `kind`; gives what the user was told."""
    import hostctl
    import nuke
    from cobaltRig import cobaltRig_w as rig
    from cobaltRig import helper

    told = []
    real_box = helper.show_message_box
    helper.show_message_box = lambda parent, text: told.append(text)
    stderr = io.StringIO()
    helper._reported.clear()

    def attempt(step):
        try:
            with contextlib.redirect_stderr(stderr):
                return step()
        except Exception as error:  # what a host shows for a failed menu command
            told.append("{}: {}".format(type(error).__name__, error))
            return None

    path = target(root, kind)
    try:
        if kind in ("settings", "advanced", "preset"):
            window = attempt(rig.import_preset)
            if window is not None:
                if kind == "settings":
                    attempt(lambda: window.slider_size.setValue(window.slider_size.value() + 3))
                if kind == "preset":
                    attempt(lambda: window.insert_in_dag(path))
                attempt(window.close)
        if kind == "advanced":
            nuke.nodes.Blur().setSelected(True)
            attempt(rig.export_nodes)
            if getattr(rig, "exportwindow", None) is not None:
                attempt(rig.exportwindow.close)
        if kind == "settings":
            attempt(lambda: rig.show_settings().close())
        if kind == "hotkeys":
            attempt(lambda: importlib.import_module("cobaltRig.menu").register())
        if kind == "metadata":
            image = os.path.join(root, "shots", "shot_001.jpg")
            attempt(lambda: helper.load_metadata(image))
            attempt(lambda: helper.set_flag(None, image, ("0", "255", "0")))
        if kind == "image":
            attempt(lambda: helper.get_image_size(path))
    finally:
        helper.show_message_box = real_box
    return {"told": told + list(hostctl.messages), "console": stderr.getvalue()}


def snapshot(root):
    """Every path under root with its bytes' hash, link target or "dir"."""
    import hashlib

    seen = {}
    for folder, dirs, files in os.walk(root):
        for name in dirs + files:
            path = os.path.join(folder, name)
            if os.path.islink(path):
                seen[path] = "link:" + os.readlink(path)
            elif os.path.isdir(path):
                seen[path] = "dir"
            else:
                try:
                    with open(path, "rb") as handle:
                        seen[path] = hashlib.sha256(handle.read()).hexdigest()
                except OSError:
                    seen[path] = "unreadable"
    return seen


def run(root, kind, variant):
    """Lays out, breaks, exercises; gives the outcome with the tree before and after."""
    import hostctl

    hostctl.reset()
    layout(root)
    good = break_file(root, target(root, kind), variant)
    before = snapshot(root)
    outcome = exercise(root, kind)
    outcome["before"], outcome["after"] = before, snapshot(root)
    outcome["good"] = good.decode("latin-1")
    hostctl.reset()
    return outcome


def unprivileged(argv):
    """`argv` as a command that file modes bind: as root, without the two capabilities that pass
    them, yet still root, so a checkout in a folder open to its owner alone stays reachable."""
    if os.geteuid() != 0:
        return argv
    caps = "-dac_override,-dac_read_search"
    return ["setpriv", "--inh-caps=" + caps, "--bounding-set=" + caps, "--"] + argv


def run_unprivileged(root, kind, variant):
    """run() in a child that file modes bind, root or not."""
    code = ("import json, sys, fault_scenarios as f\n"
            "print('\\nOUTCOME ' + json.dumps(f.run(sys.argv[1], sys.argv[2], sys.argv[3])))\n")
    path = os.pathsep.join([os.path.dirname(os.path.abspath(__file__)),
                            os.environ.get("PYTHONPATH", "")])
    result = subprocess.run(unprivileged([sys.executable, "-c", code, root, kind, variant]),
                            env=dict(os.environ, PYTHONPATH=path), capture_output=True,
                            text=True, timeout=120)
    return outcome_of(result, "child failed")


def outcome_of(result, death):
    """The JSON a child printed after "OUTCOME "; fails with its console when it died."""
    marker = result.stdout.rfind("OUTCOME ")
    if result.returncode != 0 or marker < 0:
        raise AssertionError("{} ({}):\n{}\n{}".format(death, result.returncode,
                                                        result.stdout[-2000:],
                                                        result.stderr[-4000:]))
    return json.loads(result.stdout[marker + len("OUTCOME "):])

