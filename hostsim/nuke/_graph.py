"""Nodes, groups and the root, and the functions that make, find, wire and delete them.

The graph is a tree of groups: the root holds the top-level nodes, each Group holds its own. Inputs
connect nodes of the same group only; a Group's inputs are fed, inside it, by its Input nodes in their
order, and its Output node gives what it shows downstream. That is all a renderer needs to walk an image
from a Write up to its sources, through groups.

Each node has exactly one Python object for its whole life, so handles compare with `is`. A deleted
node's object stays around but is dead: any use of it raises ValueError, as the host's handles do.

Layer: nodes and graph, on the knobs (`_knobs`) and the bottom layer (`_state`, `_journal`).
"""

import operator
import re

from . import _knobs as K
from ._state import STATE
from ._journal import recorded, setattr_hook

# What dependencies()/dependent() follow, with the host's values.
EXPRESSIONS = 1
INPUTS = 2
HIDDEN_INPUTS = 4

_NAME_RE = re.compile(r"^[A-Za-z_][A-Za-z0-9_]*$")

# Room between a node and the one created below it, as the graph lays them out.
_GAP_Y = 40
_GAP_X = 34


# ---------------------------------------------------------------------------------------------
# The classes the host knows
# ---------------------------------------------------------------------------------------------


class _ClassInfo:
    def __init__(self, base, inputs, knobs=(), size=(80, 18), output=True, disable=False):
        self.base = base  # default name without its number
        self.inputs = inputs  # maximum number of inputs
        self.knobs = knobs  # makers of the class's own knobs, in their order
        self.size = size
        self.output = output  # whether other nodes may take it as an input
        self.disable = disable


def _k(cls, name, *args, value=None, label=None):
    def make():
        knob = cls(name, name if label is None else label, *args)
        if value is not None:
            knob.setValue(value)
        return knob
    return make


_MERGE_OPERATIONS = ("atop", "average", "color-burn", "color-dodge", "copy", "difference", "divide",
                     "exclusion", "from", "hypot", "in", "mask", "max", "min", "minus", "multiply",
                     "out", "over", "overlay", "plus", "screen", "stencil", "under", "xor")
_CHANNELS = ("rgb", "rgba", "alpha", "all")
# The viewer's reduced-resolution steps: full size, then 1/2 down to 1/32.
DOWNREZ_STEPS = ("1", "2", "4", "8", "16", "32")

CLASSES = {
    "Blur": _ClassInfo("Blur", 2, (_k(K.Enumeration_Knob, "channels", _CHANNELS, value="rgba"),
                                   _k(K.WH_Knob, "size"), _k(K.Double_Knob, "mix", value=1.0)),
                       disable=True),
    "Grade": _ClassInfo("Grade", 2, (_k(K.AColor_Knob, "blackpoint"),
                                     _k(K.AColor_Knob, "whitepoint", value=1.0),
                                     _k(K.AColor_Knob, "black"),
                                     _k(K.AColor_Knob, "white", value=1.0, label="gain"),
                                     _k(K.AColor_Knob, "multiply", value=1.0),
                                     _k(K.AColor_Knob, "add", label="offset"),
                                     _k(K.AColor_Knob, "gamma", value=1.0),
                                     _k(K.Double_Knob, "mix", value=1.0)), disable=True),
    "Transform": _ClassInfo("Transform", 2, (_k(K.XY_Knob, "translate"), _k(K.Double_Knob, "rotate"),
                                             _k(K.WH_Knob, "scale", value=1.0),
                                             _k(K.XY_Knob, "center")), disable=True),
    # Merge takes B on input 0, A on 1, the mask on 2 and more A inputs after that.
    "Merge2": _ClassInfo("Merge", 100, (_k(K.Enumeration_Knob, "operation", _MERGE_OPERATIONS,
                                           value="over"),
                                        _k(K.Double_Knob, "mix", value=1.0)), disable=True),
    "Dot": _ClassInfo("Dot", 1, size=(12, 12)),
    "NoOp": _ClassInfo("NoOp", 1),
    "Switch": _ClassInfo("Switch", 100, (_k(K.Int_Knob, "which"),), disable=True),
    "Group": _ClassInfo("Group", 0),
    "Input": _ClassInfo("Input", 0, (_k(K.Int_Knob, "number"),)),
    "Output": _ClassInfo("Output", 1, output=False),
    "Viewer": _ClassInfo("Viewer", 10, (_k(K.Enumeration_Knob, "downrez", DOWNREZ_STEPS),),
                         output=False),
    "Constant": _ClassInfo("Constant", 0, (_k(K.AColor_Knob, "color"), _k(K.Format_Knob, "format"))),
    "ColorBars": _ClassInfo("ColorBars", 0, (_k(K.Format_Knob, "format"),)),
    "CheckerBoard2": _ClassInfo("CheckerBoard", 0, (_k(K.Format_Knob, "format"),
                                                    _k(K.Double_Knob, "boxsize", value=64.0))),
    "Read": _ClassInfo("Read", 0, (_k(K.File_Knob, "file"), _k(K.Format_Knob, "format"),
                                   _k(K.Int_Knob, "first", value=1), _k(K.Int_Knob, "last", value=1))),
    "Write": _ClassInfo("Write", 1, (_k(K.Enumeration_Knob, "channels", _CHANNELS, value="rgb"),
                                     _k(K.File_Knob, "file"),
                                     _k(K.Enumeration_Knob, "file_type",
                                        ("", "jpeg", "png", "tiff", "exr", "dpx"))), disable=True),
    "Reformat": _ClassInfo("Reformat", 1, (
        _k(K.Enumeration_Knob, "type", ("to format", "to box", "scale")),
        _k(K.Format_Knob, "format", label="output format"),
        _k(K.Int_Knob, "box_width", value=200, label="width/height"),
        _k(K.Int_Knob, "box_height", value=200, label=""),
        _k(K.Boolean_Knob, "box_fixed", label="force this shape"),
        _k(K.WH_Knob, "scale", value=1.0),
        _k(K.Enumeration_Knob, "resize", ("none", "width", "height", "fit", "fill", "distort"),
           value="width", label="resize type")), disable=True),
    "BackdropNode": _ClassInfo("BackdropNode", 0, (_k(K.Int_Knob, "bdwidth", value=200),
                                                   _k(K.Int_Knob, "bdheight", value=120)),
                               output=False),
}
# The older checkerboard's name still creates one, as in the host.
CLASSES["CheckerBoard"] = CLASSES["CheckerBoard2"]


def class_info(cls):
    info = CLASSES.get(cls)
    if info is None:
        raise RuntimeError("{}: Unknown command".format(cls))
    return info


# ---------------------------------------------------------------------------------------------
# The node's own knobs
# ---------------------------------------------------------------------------------------------


class _NameKnob(K.String_Knob):
    """The `name` knob: setting it renames the node, which fails if the name is taken."""

    _class_name = "String_Knob"

    @K._recorded
    def setValue(self, value):
        K._check_text(self, value)
        if self._node is None:
            self._value = value
        else:
            self._node._rename(value, uncollide=False)
        return True


class _SelectedKnob(K.Boolean_Knob):
    """The `selected` knob; remembers when a node was selected, for selectedNode()."""

    _class_name = "Boolean_Knob"

    def setValue(self, value):
        # Selecting is no undo step of its own; the steps around it restore the selection.
        self._value = self._coerce(value)
        self._changed()
        return True

    def _changed(self):
        if self._value and self._node is not None:
            self._node._selected_at = STATE.next_serial()


# Knobs the node's own methods stand on; removeKnob refuses them.
_ESSENTIAL = ("name", "selected", "xpos", "ypos")


def _node_knobs(info):
    knobs = [_NameKnob("name", "name")]
    knobs += [make() for make in info.knobs]
    if info.disable:
        knobs.append(K.Boolean_Knob("disable", "disable"))
    knobs += [
        K.Multiline_Eval_String_Knob("label", "label"),
        K.String_Knob("note_font", "font", "Verdana"),
        K.Int_Knob("note_font_size", "", 14),
        K.ColorChip_Knob("tile_color", "tile color"),
        _SelectedKnob("selected", "selected"),
        K.Boolean_Knob("hide_input", "hide input"),
        K.Int_Knob("xpos", "xpos"),
        K.Int_Knob("ypos", "ypos"),
    ]
    return knobs


def _root_knobs():
    return [
        _NameKnob("name", "name"),  # holds the script's path, empty while untitled
        K.Format_Knob("format", "full size format"),
        K.Boolean_Knob("proxy", "proxy mode"),
        K.Int_Knob("first_frame", "frame range", 1),
        K.Int_Knob("last_frame", "", 100),
        K.Double_Knob("fps", "fps", 24.0),
    ]


# ---------------------------------------------------------------------------------------------
# Nodes
# ---------------------------------------------------------------------------------------------


def _check_node(value, what="node"):
    if not isinstance(value, Node):
        raise TypeError("a {} is expected, got {}".format(what, type(value).__name__))
    if not value._alive:
        raise ValueError(K.DEAD_HANDLE)
    return value


def _node_step(what):
    return lambda node, *args, **kwargs: "{} {}".format(what, node._knob_value("name"))


class Node:
    """A node of the graph. Made by createNode, nuke.nodes.<Class>, a paste or makeGroup only."""

    # Public names that still answer on a dead handle (Group.end must leave the context).
    _DEAD_OK = frozenset()
    # Undo sees a node before it changes; one without knobs yet is still being made.
    __setattr__ = setattr_hook
    _undo_complete = "_knobs"
    _undo_is_node = True

    def __init__(self, cls, info=None, knobs=None):
        self._alive = True
        self._class = cls
        self._info = info or class_info(cls)
        self._parent = None
        self._inputs = []
        self._shown = False
        self._serial = STATE.next_serial()
        self._selected_at = 0
        self._viewer_active = [None, None]  # shown input of a Viewer: primary and secondary
        # Knob lines of a read script that no knob of the node takes, as (name, text), written back.
        self._extra = ()
        self._knobs = []
        for knob in (knobs if knobs is not None else _node_knobs(self._info)):
            self._attach(knob)

    def __getattribute__(self, attr):
        if not attr.startswith("_") and not object.__getattribute__(self, "_alive"):
            if attr not in object.__getattribute__(self, "_DEAD_OK"):
                raise ValueError(K.DEAD_HANDLE)
        return object.__getattribute__(self, attr)

    def _check(self):
        if not self._alive:
            raise ValueError(K.DEAD_HANDLE)

    def __repr__(self):
        if not self._alive:
            return "<dead {} node>".format(self._class)
        return "<{} {}>".format(self._class, self.name())

    def _knob_value(self, name):
        for knob in self._knobs:
            if knob._name == name:
                return knob._value
        return None

    def _knob_obj(self, name):
        for knob in self._knobs:
            if knob._name == name:
                return knob
        return None

    def _attach(self, knob):
        knob._node = self
        self._knobs.append(knob)

    # -- identity -------------------------------------------------------------------------------
    def Class(self):
        return self._class

    def name(self):
        return self._knob_value("name")

    @recorded(_node_step("Rename"))
    def setName(self, name, uncollide=True, updateExpressions=False):
        self._rename(name, uncollide)

    def _rename(self, name, uncollide):
        if not isinstance(name, str):
            raise TypeError("a node name must be a text")
        if not _NAME_RE.match(name):
            raise ValueError("{!r} is not a valid node name".format(name))
        group = self._parent
        if group is not None:
            taken = {n._knob_value("name") for n in group._children if n is not self}
            if name in taken:
                if not uncollide:
                    raise ValueError("{} is already in use".format(name))
                name = unique_name(group, name, exclude=self)
        self._knob_obj("name")._value = name

    def fullName(self):
        parts, node = [], self
        while node is not None and not isinstance(node, Root):
            parts.append(node.name())
            node = node._parent
        return ".".join(reversed(parts))

    # -- knobs ----------------------------------------------------------------------------------
    def knobs(self):
        """A new mapping on each call, so callers may remove knobs while they walk it."""
        result = {}
        for knob in self._knobs:
            result.setdefault(knob._name, knob)
        return result

    def allKnobs(self):
        return list(self._knobs)

    def numKnobs(self):
        return len(self._knobs)

    def knob(self, key):
        if isinstance(key, int) and not isinstance(key, bool):
            return self._knobs[key] if 0 <= key < len(self._knobs) else None
        return self._knob_obj(key)

    def __getitem__(self, key):
        self._check()
        knob = self._knob_obj(key)
        if knob is None:
            raise NameError("knob {} does not exist".format(key))
        return knob

    @recorded(_node_step("Add knob to"))
    def addKnob(self, knob):
        """Appends the knob: it stands last, under the tab added last."""
        if not isinstance(knob, K.Knob):
            raise TypeError("a knob is expected, got {}".format(type(knob).__name__))
        if knob._node is not None:
            raise ValueError("knob {} already belongs to a node".format(knob._name))
        self._attach(knob)
        return True

    @recorded(_node_step("Remove knob from"))
    def removeKnob(self, knob):
        if not isinstance(knob, K.Knob):
            raise TypeError("a knob is expected, got {}".format(type(knob).__name__))
        if knob._node is not self or knob not in self._knobs:
            raise ValueError("knob {} is not on node {}".format(knob._name, self.name()))
        if knob._name in _ESSENTIAL and self._knob_obj(knob._name) is knob:
            raise ValueError("knob {} cannot be removed".format(knob._name))
        self._knobs = [k for k in self._knobs if k is not knob]
        knob._node = None

    # -- selection ------------------------------------------------------------------------------
    def isSelected(self):
        return bool(self._knob_value("selected"))

    def setSelected(self, selected):
        self["selected"].setValue(bool(selected))

    def selectOnly(self):
        """Selects this node alone within its own group; other groups keep their selection."""
        for other in self._parent._children if self._parent is not None else ():
            if other is not self and other.isSelected():
                other.setSelected(False)
        self.setSelected(True)

    # -- position and panel ---------------------------------------------------------------------
    def xpos(self):
        return int(self._knob_value("xpos"))

    def ypos(self):
        return int(self._knob_value("ypos"))

    def setXpos(self, x):
        self["xpos"].setValue(operator.index(x))

    def setYpos(self, y):
        self["ypos"].setValue(operator.index(y))

    @recorded(_node_step("Move"))
    def setXYpos(self, x, y):
        x, y = operator.index(x), operator.index(y)
        self["xpos"].setValue(x)
        self["ypos"].setValue(y)

    def screenWidth(self):
        if self._class == "BackdropNode":
            return int(self._knob_value("bdwidth"))
        return self._info.size[0]

    def screenHeight(self):
        if self._class == "BackdropNode":
            return int(self._knob_value("bdheight"))
        return self._info.size[1]

    def shown(self):
        return self._shown

    def showControlPanel(self, forceFloat=False):
        self._shown = True

    def hideControlPanel(self):
        self._shown = False

    # -- connections ----------------------------------------------------------------------------
    def maxInputs(self):
        return self._info.inputs

    def minInputs(self):
        return 0

    def inputs(self):
        """The highest connected input plus one; unconnected inputs below it count."""
        return len(self._inputs)

    def input(self, i):
        i = operator.index(i)
        return self._inputs[i] if 0 <= i < len(self._inputs) else None

    @recorded(_node_step("Connect"))
    def setInput(self, i, node):
        """Connects input i; False when the host would refuse (no such input, a loop, ...)."""
        i = operator.index(i)
        if node is not None:
            _check_node(node)
            if (node._parent is not self._parent or isinstance(node, Root) or not node._info.output
                    or node is self or self in _upstream(node)):
                return False
        if not 0 <= i < self.maxInputs():
            return False
        self._set_input_raw(i, node)
        return True

    def _set_input_raw(self, i, node):
        while len(self._inputs) <= i:
            self._inputs.append(None)
        self._inputs[i] = node
        while self._inputs and self._inputs[-1] is None:
            self._inputs.pop()
        # A viewer shows the first input it is given until told otherwise.
        if node is not None and self._class == "Viewer" and self._viewer_active[0] is None:
            self._viewer_active[0] = i

    def _pipes(self, what):
        """The nodes on the input pipes that `what` asks for: the visible ones (INPUTS), or the
        ones of a node whose inputs are hidden (HIDDEN_INPUTS)."""
        hidden = bool(self._knob_value("hide_input"))
        if not what & (HIDDEN_INPUTS if hidden else INPUTS):
            return []
        return [node for node in self._inputs if node is not None]

    def _expression_links(self):
        found = []
        for knob in self._knobs:
            for node in K.referenced_nodes(knob):
                if node._alive and node not in found:
                    found.append(node)
        return found

    def dependencies(self, what=INPUTS | HIDDEN_INPUTS | EXPRESSIONS):
        """The nodes this one reads from, each once, without gaps: its inputs in input order,
        then (EXPRESSIONS) the nodes its expressions and [commands] name."""
        what = operator.index(what)
        result = []
        for node in self._pipes(what) + (self._expression_links() if what & EXPRESSIONS else []):
            if node not in result:
                result.append(node)
        return result

    def dependent(self, what=INPUTS | HIDDEN_INPUTS | EXPRESSIONS, forceEvaluate=True):
        """The nodes that read from this one: those of its group it feeds through an input, then
        (EXPRESSIONS) those anywhere whose expressions name it."""
        what = operator.index(what)
        if self._parent is None:
            return []
        result = [n for n in self._parent._children if self in n._pipes(what)]
        if what & EXPRESSIONS:
            result += [n for n in _everywhere() if n not in result and self in n._expression_links()]
        return result


def _everywhere():
    pending, found = list(STATE.root._children), []
    while pending:
        node = pending.pop(0)
        found.append(node)
        pending.extend(getattr(node, "_children", ()))
    return found


def _upstream(node):
    """Every node that feeds `node`, directly or not (within its group)."""
    seen, pending = [], list(node._inputs)
    while pending:
        current = pending.pop()
        if current is not None and current not in seen:
            seen.append(current)
            pending.extend(current._inputs)
    return seen


class Group(Node):
    """A node holding a graph of its own. `with group:` (or begin/end) makes it the context that
    createNode, allNodes, nodePaste, ... act in."""

    _DEAD_OK = frozenset(("end",))

    def __init__(self, cls="Group", info=None, knobs=None):
        self._children = []
        super().__init__(cls, info, knobs)

    def maxInputs(self):
        return len(self._input_nodes())

    def _input_nodes(self):
        return [n for n in self._children if n._class == "Input"]

    def nodes(self):
        return list(self._children)

    def node(self, name):
        return _find_path(self, name.split("."))

    def output(self):
        for node in self._children:
            if node._class == "Output":
                return node
        return None

    def begin(self):
        STATE.context.append(self)
        return self

    def end(self):
        """Leaves the context entered by the matching begin(); a dead group still leaves it, then
        raises like every other use of a dead handle."""
        if STATE.context and STATE.context[-1] is self:
            STATE.context.pop()
        elif self is not STATE.root:
            raise RuntimeError("{}.end() without a matching begin()".format(self._class))
        if not self._alive:
            raise ValueError(K.DEAD_HANDLE)

    def __enter__(self):
        self._check()
        self.begin()
        return self

    def __exit__(self, exc_type, exc, tb):
        self.end()
        return False


class Root(Group):
    """The script itself: the top-level group, with the script's settings as knobs."""

    def __init__(self):
        super().__init__("Root", _ClassInfo("Root", 0, output=False), _root_knobs())

    def name(self):
        return self._knob_value("name") or "Root"

    def _rename(self, name, uncollide):
        # The root's name is the script's path.
        self._knob_obj("name")._value = name

    def fullName(self):
        return "root"

    def isSelected(self):
        return False

    def setSelected(self, selected):
        pass

    def selectOnly(self):
        pass

    def maxInputs(self):
        return 0

    def setInput(self, i, node):
        return False

    def _reset(self):
        for node in self._children:
            _kill(node)
        self._children = []
        for knob in self._knobs:
            knob._node = None
        self._knobs = []
        self._extra = ()
        for knob in _root_knobs():
            self._attach(knob)


STATE.root = Root()


def opaque_info(cls):
    """What this host assumes of a class it does not know, met in a script: any number of inputs,
    an image out, no knobs beyond every node's own."""
    if cls not in _OPAQUE:
        # Numbered names are made from the class name: they must be valid node names too.
        base = re.sub(r"\W", "_", cls).rstrip("0123456789") or "Node"
        _OPAQUE[cls] = _ClassInfo(base, 100)
    return _OPAQUE[cls]


_OPAQUE = {}


def new_node(cls, group, name=None, info=None):
    """Makes a node of class `cls` in `group`: unconnected, unselected, uniquely named."""
    info = info or class_info(cls)
    node = Group(cls, info) if cls == "Group" else Node(cls, info)
    if cls == "Input":
        node["number"].setValue(len(group._input_nodes()))
    node._parent = group
    taken = {n._knob_value("name") for n in group._children}
    node._knob_obj("name")._value = unique_name(group, name) if name else _numbered(info.base, taken)
    # Images are made in the script's format unless the user picks another.
    for knob in node._knobs:
        if isinstance(knob, K.Format_Knob):
            knob._value = STATE.root._knob_value("format")
    group._children.append(node)
    return node


def unique_name(group, name, exclude=None):
    """`name` if it is free in `group`, else its stem with the lowest free number (Blur1, Blur2)."""
    taken = {n._knob_value("name") for n in group._children if n is not exclude}
    return name if name not in taken else _numbered(name.rstrip("0123456789") or name, taken)


def _numbered(stem, taken):
    number = 1
    while "{}{}".format(stem, number) in taken:
        number += 1
    return "{}{}".format(stem, number)


def _kill(node):
    node._alive = False
    node._inputs = []
    for child in getattr(node, "_children", ()):
        _kill(child)


# ---------------------------------------------------------------------------------------------
# Contexts and look-ups
# ---------------------------------------------------------------------------------------------


def current_group():
    """The innermost group context still alive; the root when none was entered."""
    for group in reversed(STATE.context):
        if group._alive:
            return group
    return STATE.root


def root():
    return STATE.root


def thisGroup():
    return current_group()


def thisNode():
    """The node whose knob command runs; outside a command, the current context."""
    if STATE.this and STATE.this[-1][0] is not None:
        return STATE.this[-1][0]
    return current_group()


def thisKnob():
    return STATE.this[-1][1] if STATE.this else None


def _find_path(group, parts):
    node = group
    for part in parts:
        if not isinstance(node, Group):
            return None
        node = next((n for n in node._children if n._knob_value("name") == part), None)
        if node is None:
            return None
    return node


K.use_path_finder(_find_path)


def toNode(s):
    """A node by name or dotted path ("Group1.Blur1") from the current context; "root" is the root."""
    if not isinstance(s, str):
        raise TypeError("a node name must be a text")
    parts = s.split(".")
    if parts[0] == "root":
        return _find_path(STATE.root, parts[1:])
    return _find_path(current_group(), parts)


def allNodes(filter=None, group=None, recurseGroups=False):
    group = current_group() if group is None else _check_node(group, "group")
    result = []
    for node in group._children:
        if filter is None or node._class == filter:
            result.append(node)
        if recurseGroups and isinstance(node, Group):
            result.extend(allNodes(filter, node, True))
    return result


def selectedNodes(filter=None):
    """The selected nodes of the current group, in graph order."""
    return [n for n in current_group()._children
            if n.isSelected() and (filter is None or n._class == filter)]


def _selected_output(group):
    """The selected node a new or pasted node hooks onto: one that no other selected node takes as
    input, the most recently selected of those."""
    selected = [n for n in group._children if n.isSelected()]
    outputs = [n for n in selected if not any(n in other._inputs for other in selected)]
    candidates = outputs or selected
    return max(candidates, key=lambda n: n._selected_at) if candidates else None


def selectedNode():
    """The node the artist is working on: a selected node of the highest graph level that has one
    (searched from the top, into groups), one that no other selected node there takes as input;
    with nothing selected, the node under the pointer when the last key press was a hotkey."""
    level = [STATE.root]
    while level:
        for group in level:
            node = _selected_output(group)
            if node is not None:
                return node
        level = [child for group in level for child in group._children if isinstance(child, Group)]
    pointed = STATE.node_under_pointer
    if pointed is not None and pointed._alive:
        return pointed
    raise ValueError("No node selected")


def frame(f=None):
    if f is not None:
        STATE.frame = int(f)
    return STATE.frame


# ---------------------------------------------------------------------------------------------
# Making and removing
# ---------------------------------------------------------------------------------------------


def _free_spot(group, node):
    """A place right of everything in the group, for nodes created with nothing selected."""
    others = [n for n in group._children if n is not node]
    if not others:
        return 0, 0
    return max(n.xpos() + n.screenWidth() for n in others) + _GAP_X, min(n.ypos() for n in others)


def _place_below(node, above):
    x = above.xpos() + (above.screenWidth() - node.screenWidth()) // 2
    node.setXYpos(x, above.ypos() + above.screenHeight() + _GAP_Y)


def _apply_args(node, args):
    words = K.tcl_words(args)
    if len(words) % 2:
        raise ValueError("{}: knob and value pairs expected in {!r}".format(node.name(), args))
    for name, text in zip(words[::2], words[1::2]):
        node[name].fromScript(text)


@recorded(lambda node, *args, **kwargs: "Create {}".format(node))
def createNode(node, args=None, inpanel=True):
    """Creates a node as the user does: hooked below the selected node, taking over its outputs."""
    if not isinstance(node, str):
        raise TypeError("a class name is expected")
    group = current_group()
    class_info(node)
    above = _selected_output(group)
    new = new_node(node, group)
    if args:
        try:
            _apply_args(new, args)
        except Exception:
            delete(new)
            raise
    if above is None:
        new.setXYpos(*_free_spot(group, new))
    else:
        _place_below(new, above)
        # A viewer watches the node; anything else is inserted after it.
        if new.setInput(0, above) and node != "Viewer":
            for other in group._children:
                if other is new:
                    continue
                for i, source in enumerate(other._inputs):
                    if source is above:
                        other._inputs[i] = new
    new.selectOnly()
    if inpanel:
        new.showControlPanel()
    return new


class _NodeMakers:
    """`nuke.nodes.Blur(size=3, inputs=[read])`: unconnected unless told, no selection change."""

    def __getattr__(self, cls):
        if cls.startswith("_"):
            raise AttributeError(cls)

        @recorded(lambda **knobs: "Create {}".format(cls))
        def make(**knobs):
            group = current_group()
            inputs = knobs.pop("inputs", ())
            new = new_node(cls, group)
            try:
                new.setXYpos(*_free_spot(group, new))
                for name, value in knobs.items():
                    new[name].setValue(value)
                for i, source in enumerate(inputs):
                    new.setInput(i, source)
            except Exception:
                delete(new)  # no half-made node stays behind
                raise
            return new

        make.__name__ = cls
        return make


nodes = _NodeMakers()


@recorded(lambda node: "Delete {}".format(node._knob_value("name")))
def delete(node):
    """Removes the node; what it fed is fed by its input 0 from now on. Its handle dies, and so do
    those of a group's members."""
    _check_node(node)
    if isinstance(node, Root):
        raise ValueError("the root cannot be deleted")
    group, source = node._parent, node.input(0)
    for other in group._children:
        if node in other._inputs:
            for i, current in enumerate(list(other._inputs)):
                if current is node:
                    other._set_input_raw(i, source)
    group._children.remove(node)
    if STATE.active_viewer is node:
        STATE.active_viewer = None
    _kill(node)


# ---------------------------------------------------------------------------------------------
# The viewer
# ---------------------------------------------------------------------------------------------


class ViewerWindow:
    """The viewer window of a Viewer node: which input it shows."""

    def __init__(self, node):
        self._node = node

    def __eq__(self, other):
        return isinstance(other, ViewerWindow) and other._node is self._node

    def __hash__(self):
        return id(self._node)

    def node(self):
        return self._node if self._node._alive else None

    def activeInput(self, secondary=False):
        node = self.node()
        if node is None:
            return None
        index = node._viewer_active[1 if secondary else 0]
        return index if index is not None and node.input(index) is not None else None

    def activateInput(self, i, secondary=False):
        node = self.node()
        if node is None or node.input(i) is None:
            raise ValueError("input {} of the viewer is not connected".format(i))
        node._viewer_active[1 if secondary else 0] = operator.index(i)


def activeViewer():
    """The window of the Viewer chosen through hostctl, else of the root's newest Viewer."""
    chosen = STATE.active_viewer
    if chosen is not None and chosen._alive:
        return ViewerWindow(chosen)
    viewers = [n for n in STATE.root._children if n._class == "Viewer"]
    if not viewers:
        return None
    return ViewerWindow(max(viewers, key=lambda n: n._serial))
