"""Starts the demo host: the simulated host with a window, the add-on loaded, a sample to work on.

    scripts/demo                                   the window, on a display
    scripts/demo --offscreen --screenshot out.png  no display: a PNG of the window after start-up
    scripts/demo --offscreen --scenario FILE       run a Python scenario in the host, then quit
                                                   (several --scenario files run in their order)
    scripts/demo --data DIR                        keep the sample, pool and snapshots in DIR

A scenario runs in the host's script namespace (`nuke`, `nukescripts`) with `demo` (the window:
`demo.press(node, "look_new")`, `demo.open_panel(node, "looks")`, `demo.screenshot(path)`),
`hostctl` and `folder` (where the sample lives) beside them.
"""

import argparse
import os
import sys
import tempfile
import traceback

NO_DISPLAY = ("No display ($DISPLAY is not set): run the demo host headless with "
              "scripts/demo --offscreen --screenshot FILE, or --scenario FILE.")


def parse(argv):
    parser = argparse.ArgumentParser(prog="scripts/demo", description=__doc__.splitlines()[0])
    parser.add_argument("--offscreen", action="store_true",
                        help="draw without a display; quit when start-up (and the scenario) is done")
    parser.add_argument("--screenshot", metavar="FILE",
                        help="write a PNG of the window after start-up (and the scenario)")
    parser.add_argument("--scenario", metavar="FILE", action="append", default=[],
                        help="a Python file to run in the host (may be given more than once)")
    parser.add_argument("--data", metavar="DIR",
                        help="folder for the sample script, pool, snapshots and settings "
                             "(default: a new temporary folder)")
    return parser.parse_args(argv)


def has_display():
    if not sys.platform.startswith("linux"):
        return True
    return bool(os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY")) \
        or os.environ.get("QT_QPA_PLATFORM", "") not in ("", "xcb", "wayland")


def run_scenario(path, window, folder):
    import hostctl
    from nuke import _script

    namespace = _script.namespace()
    namespace.update(demo=window, hostctl=hostctl, folder=folder, __file__=os.path.abspath(path))
    with open(path, encoding="utf-8") as f:
        code = compile(f.read(), path, "exec")
    exec(code, namespace)


def main(argv=None):
    args = parse(sys.argv[1:] if argv is None else argv)
    # Asked for through the environment, offscreen means the same as the option.
    args.offscreen = args.offscreen or os.environ.get("QT_QPA_PLATFORM") == "offscreen"
    if args.offscreen:
        os.environ["QT_QPA_PLATFORM"] = "offscreen"
    elif not has_display():
        print(NO_DISPLAY)
        return 1

    folder = os.path.abspath(args.data or tempfile.mkdtemp(prefix="cobaltrig_demo_"))
    # The demo keeps its settings beside its sample: an artist's own settings stay untouched.
    os.environ["COBALTRIG_HOME"] = os.path.join(folder, "settings")

    import hostctl
    import nuke
    from cobaltRig.qt import QtCore, QtWidgets, exec_dialog

    from . import sample
    from .main_window import DemoHost, answer_dialogs_offscreen, apply_dark_style

    # Dialogs of the host are real dialogs for a person at the screen; headless, they answer from
    # hostctl's queues (and nuke.message only records), so a scenario can never wait for nobody.
    hostctl.set_interactive(not args.offscreen)
    import cobaltRig.menu  # noqa: F401  -- what the host runs at start-up: menus and hotkeys

    script = os.path.join(folder, sample.SCRIPT_NAME)
    if args.data and os.path.isfile(script):
        try:
            nuke.scriptOpen(script)
        except RuntimeError as error:
            # Left as it is: the file may be the only copy of someone's work.
            print("cobaltRig demo host: {}. Give --data a new folder to start on a fresh sample."
                  .format(error))
            return 1
        start_node = next((n for n in nuke.allNodes() if n.knob("looks") is not None), None)
    else:
        start_node = sample.prepare(folder)
    print("cobaltRig demo host: sample script, pool and snapshots in {}".format(folder))

    app = QtWidgets.QApplication.instance()
    apply_dark_style(app)
    window = DemoHost()
    window.show()
    if start_node is not None:
        window.open_panel(start_node, "looks")
    window.graph.frame_all()
    if args.offscreen:
        answer_dialogs_offscreen(window)
    status = {"code": 0}

    def after_start():
        try:
            for scenario in args.scenario:
                run_scenario(scenario, window, folder)
                window.sync()
                window.graph.frame_all()
            if args.screenshot:
                print("screenshot: {}".format(window.screenshot(args.screenshot)))
        except Exception:
            traceback.print_exc()
            status["code"] = 1
        if args.offscreen:
            window.close()
            app.exit(status["code"])

    QtCore.QTimer.singleShot(0, after_start)
    code = exec_dialog(app)
    return status["code"] or code


if __name__ == "__main__":
    sys.exit(main())
