"""The host's `nuke` module, simulated: the node graph, knobs, copy and paste, scripts, the viewer,
panels and menus, with the names and signatures the host's Python API has.

Like the host, this module owns the Qt application: importing it makes sure a QApplication exists.
Tests steer it through the module `hostctl` beside it.

Where the host's reference leaves a choice open, this host decides so:
- `nodePaste` returns the last node it pasted at the top level; for a single node, that node.
- A new script's format is HD_1080 (1920x1080); the frame range is 1-100 at 24 fps.
- `selectedNodes()` lists in graph order (creation, then paste order).
- `scriptSave(filename)` writes a copy and keeps the script's name; `scriptSaveAs` renames.
- A dead Group's `end()`/`__exit__` still leaves its context, then raises like any dead handle.
- A new node's format knobs start at the root's format.
- Images are drawn with Qt's image classes; see `_render` for what each image node does.
- Integer knobs, check boxes and pulldowns give floats from `getValue()`, their own type from
  `value()`.
- Selecting nodes makes no undo step of its own; a `with nuke.Undo():` block that fails still ends as
  one step, which undo can take back (nothing is rolled back by itself).
- Of the script language in text knobs, only `[value knob]` and `[knob knob]` are evaluated (a knob
  named as `knob`, `Node.knob`, `parent.Node.knob` or `root.knob`); other commands stay as typed. An
  expression on a number knob is kept, copied and followed by `dependencies()`, but not computed.
- `Undo`'s methods answer on an instance and on the class, as the newest host's do;
  `hostctl.set_undo_instance_only()` makes it refuse the class-level form, as older hosts do.
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


_application = _ensure_application()

from ._knobs import (  # noqa: E402
    AColor_Knob, Array_Knob, Boolean_Knob, Color_Knob, ColorChip_Knob, DISABLED, DO_NOT_WRITE,
    Double_Knob, ENDLINE, Enumeration_Knob, EvalString_Knob, File_Knob, Format, Format_Knob,
    INVISIBLE, Int_Knob, Knob, Multiline_Eval_String_Knob, PyScript_Knob, PythonKnob, READ_ONLY,
    STARTLINE, String_Knob, Tab_Knob, Text_Knob, WH_Knob, XY_Knob)
from ._graph import (  # noqa: E402
    EXPRESSIONS, HIDDEN_INPUTS, INPUTS, Group, Node, Root, ViewerWindow, activeViewer, allNodes,
    createNode, delete, frame, nodes, root, selectedNode, selectedNodes, thisGroup, thisKnob,
    thisNode, toNode)
from ._serialize import (  # noqa: E402
    makeGroup, nodeCopy, nodePaste, scriptClear, scriptName, scriptOpen, scriptReadFile, scriptSave,
    scriptSaveAs)
from ._render import execute  # noqa: E402
from ._ui import (  # noqa: E402
    Menu, MenuItem, Panel, ask, getInput, menu, message, pluginAddPath, pluginAppendPath,
    pluginPath, toolbar)
from ._undo import Undo, redo, undo  # noqa: E402
from ._knobs import BBox_Knob, Link_Knob, UV_Knob, XYZ_Knob  # noqa: E402


def formats():
    from ._knobs import FORMATS

    return list(FORMATS)

