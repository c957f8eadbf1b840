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

The package reads one way, each file using only those below it (a lower one gets what it needs from
above as a hook the higher one hands in when it loads):
1. `_state` (the one mutable state), `_host` (version, the Qt application, the clipboard), `_journal`
   (recording undo steps), `_script` (running commands);
2. `_knobs`, then `_graph` (nodes, groups, the root);
3. `_nk` (the script text), `_serialize` (copy, paste, save, open), `_undo` (the host's `Undo`);
4. `_render` (images), `_ui` (dialogs, panels, menus, the plug-in path);
5. this file, which only gathers their public names. `nukescripts` stands on it.
"""

import sys

from . import _script
from ._host import (
    GUI, NUKE_VERSION_MAJOR, NUKE_VERSION_MINOR, NUKE_VERSION_RELEASE, NUKE_VERSION_STRING, env)
from ._host import application as _application
from ._knobs import (
    AColor_Knob, Array_Knob, BBox_Knob, Boolean_Knob, Color_Knob, ColorChip_Knob, DISABLED,
    DO_NOT_WRITE, Double_Knob, ENDLINE, Enumeration_Knob, EvalString_Knob, File_Knob, Format,
    Format_Knob, INVISIBLE, Int_Knob, Knob, Link_Knob, Multiline_Eval_String_Knob, PyScript_Knob,
    PythonKnob, READ_ONLY, STARTLINE, String_Knob, Tab_Knob, Text_Knob, UV_Knob, WH_Knob, XY_Knob,
    XYZ_Knob, formats)
from ._graph import (
    EXPRESSIONS, HIDDEN_INPUTS, INPUTS, Group, Node, Root, ViewerWindow, activeViewer, allNodes,
    createNode, delete, frame, nodes, root, selectedNode, selectedNodes, thisGroup, thisKnob,
    thisNode, toNode)
from ._serialize import (
    makeGroup, nodeCopy, nodePaste, scriptClear, scriptName, scriptOpen, scriptReadFile, scriptSave,
    scriptSaveAs)
from ._undo import Undo, redo, undo
from ._render import execute
from ._ui import (
    Menu, MenuItem, Panel, ask, getInput, menu, message, pluginAddPath, pluginAppendPath,
    pluginPath, toolbar)

# Commands run with this module in their namespace.
_script.provide("nuke", sys.modules[__name__])
