"""What host this is, and the Qt application it owns: the version numbers, the GUI flag, the one
QApplication, and the operating system's clipboard that nodeCopy/nodePaste("%clipboard%") share with
every other program.

The bottom layer, with `_state`: it uses no other file of this package, and holds the Qt binding
(`QtCore`, `QtGui`, `QtWidgets`) that the files above it use.
"""

import os
import sys

# A host ships one Qt binding (hosts 16 and later PySide6, earlier ones PySide2) and an add-on takes
# the one it finds. The simulated host is the version whose binding this interpreter has; an add-on
# built for the other Qt meets it as it would meet such a real host.
try:
    from PySide6 import QtCore, QtGui, QtWidgets

    QT_MAJOR = 6
except ImportError:
    from PySide2 import QtCore, QtGui, QtWidgets

    QT_MAJOR = 5

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


def exec_dialog(dialog):
    """Runs a dialog under the name its binding gives `exec`; returns its result."""
    return dialog.exec() if QT_MAJOR == 6 else dialog.exec_()


def clipboard_text():
    """The clipboard's text, or None when it holds none."""
    return QtWidgets.QApplication.clipboard().text() or None


def set_clipboard_text(text):
    clipboard = QtWidgets.QApplication.clipboard()
    if text is None:
        clipboard.clear()
    else:
        clipboard.setText(text)
