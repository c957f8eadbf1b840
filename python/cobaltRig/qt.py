"""The Qt binding that the compiled module was built for, under one set of names.

A host ships exactly one binding (PySide2 with Qt 5, PySide6 with Qt 6) and the compiled module
only works inside the one it was built against, so the choice is made at build time and written
to ``_binding.py`` beside this file. Everything in the package, the demo host, the tests and the
benchmarks imports Qt from here (the simulated host's `nuke`, like a real host, carries its own):

    from cobaltRig.qt import QtCore, QtGui, QtWidgets

Importing this module imports the binding, which loads its Qt libraries; do it before importing
``cobaltRig_w``, as a host does, so that the process holds one Qt.

Where the two bindings differ, the difference is kept here: ``QAction`` lives in QtWidgets in Qt 5
and in QtGui in Qt 6, and ``exec_dialog`` runs a dialog's or an event loop's ``exec`` under the
name each binding knows without a deprecation warning. ``QtTest`` is imported on first use only:
the product never needs it, a test does.
"""

import importlib

from ._binding import BINDING

if BINDING == "PySide6":
    from PySide6 import QtCore, QtGui, QtWidgets
    import shiboken6 as shiboken

    QAction = QtGui.QAction
    QT_MAJOR = 6
else:
    from PySide2 import QtCore, QtGui, QtWidgets
    import shiboken2 as shiboken

    QAction = QtWidgets.QAction
    QT_MAJOR = 5


def exec_dialog(obj):
    """Runs ``obj.exec()`` (a dialog, a menu, an event loop, the application) and returns its result."""
    run = getattr(obj, "exec", None) if QT_MAJOR == 6 else getattr(obj, "exec_", None)
    if run is None:
        run = getattr(obj, "exec_", None) or getattr(obj, "exec")
    return run()


def __getattr__(name):
    if name == "QtTest":
        module = importlib.import_module(BINDING + ".QtTest")
        globals()["QtTest"] = module
        return module
    raise AttributeError("module %r has no attribute %r" % (__name__, name))


__all__ = ["BINDING", "QT_MAJOR", "QtCore", "QtGui", "QtWidgets", "QAction", "shiboken", "exec_dialog"]
