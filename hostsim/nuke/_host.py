"""What host this is, and the Qt application it owns: the version numbers, the GUI flag, the one
QApplication, and the operating system's clipboard that nodeCopy/nodePaste("%clipboard%") share with
every other program.

The bottom layer, with `_state`: it uses no other file of this package.
"""

import os
import sys

from cobaltRig.qt import QT_MAJOR, QtWidgets

# The simulated host is a version that carries the binding in use: 15 with Qt 5, 16 with Qt 6.
NUKE_VERSION_MAJOR = 16 if QT_MAJOR == 6 else 15
NUKE_VERSION_MINOR = 1
NUKE_VERSION_RELEASE = 2
NUKE_VERSION_STRING = "%d.%dv%d" % (NUKE_VERSION_MAJOR, NUKE_VERSION_MINOR, NUKE_VERSION_RELEASE)
GUI = True
env = {"gui": True, "NukeVersionMajor": NUKE_VERSION_MAJOR, "NukeVersionMinor": NUKE_VERSION_MINOR,
       "NukeVersionRelease": NUKE_VERSION_RELEASE, "NukeVersionString": NUKE_VERSION_STRING}


def _ensure_application():
    app = QtWidgets.QApplication.instance()
    if app is None:
        # Without a display Qt would abort the process; draw offscreen instead.
        if sys.platform.startswith("linux") and not (os.environ.get("DISPLAY")
                                                     or os.environ.get("WAYLAND_DISPLAY")):
            os.environ.setdefault("QT_QPA_PLATFORM", "offscreen")
        app = QtWidgets.QApplication(sys.argv[:1] or ["host"])
    return app


# Like the host, importing `nuke` makes sure the application exists.
application = _ensure_application()


def clipboard_text():
    """The clipboard's text, or None when it holds none."""
    return QtWidgets.QApplication.clipboard().text() or None


def set_clipboard_text(text):
    clipboard = QtWidgets.QApplication.clipboard()
    if text is None:
        clipboard.clear()
    else:
        clipboard.setText(text)
