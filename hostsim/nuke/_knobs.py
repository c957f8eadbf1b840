"""Knobs: the named, typed values on a node.

A knob belongs to no node until `Node.addKnob` (or the node's own construction) attaches it; once its
node is deleted, every use of the knob raises, as the node's handle does.

Value types follow the host: `value()` gives the natural Python type (text, bool, int, the item text of a
pulldown), while `getValue()` of the numeric knobs gives a float, as the host's array knobs do. Setters
are strict about types (a text for a string knob, a number for a numeric one), so that a caller that
would fail in the host fails here too.

Layer: knobs, on the bottom layer (`_state`, `_journal`, `_script`). Groups are the graph's, above:
`_graph` hands in how a dotted path finds a node (`use_path_finder`).
"""

import numbers
import operator
import re

from . import _script
from ._journal import recorded, setattr_hook
from ._state import STATE

DEAD_HANDLE = "A PythonObject is not attached to a node"

# Knob flags, with the host's values.
DISABLED = 0x00000080
DO_NOT_WRITE = 0x00000200
INVISIBLE = 0x00000400
STARTLINE = 0x00001000
ENDLINE = 0x00002000
READ_ONLY = 0x10000000


def _check_text(knob, value):
    if not isinstance(value, str):
        raise TypeError("{}: a text is expected, got {}".format(knob._name, type(value).__name__))
    return value


def _check_number(knob, value):
    if isinstance(value, bool) or not isinstance(value, numbers.Real):
        raise TypeError("{}: a number is expected, got {}".format(knob._name, type(value).__name__))
    return value


def tcl_words(text):
    """Splits a knob-value text into words: blanks separate, {braces} nest, "quotes" escape.

    This is the small subset of the host's script syntax that `createNode(..., args)` and
    `Knob.fromScript` need.
    """
    words, i, n = [], 0, len(text)
    while i < n:
        if text[i].isspace():
            i += 1
            continue
        if text[i] == "{":
            depth, j = 1, i + 1
            while j < n and depth:
                if text[j] == "\\":
                    j += 1
                elif text[j] == "{":
                    depth += 1
                elif text[j] == "}":
                    depth -= 1
                j += 1
            if depth:
                raise ValueError("unbalanced braces in {!r}".format(text))
            words.append(text[i + 1:j - 1])
            i = j
        elif text[i] == '"':
            out, j = [], i + 1
            while j < n and text[j] != '"':
                if text[j] == "\\" and j + 1 < n:
                    j += 1
                out.append(text[j])
                j += 1
            if j >= n:
                raise ValueError("unbalanced quotes in {!r}".format(text))
            words.append("".join(out))
            i = j + 1
        else:
            j = i
            while j < n and not text[j].isspace():
                j += 1
            words.append(text[i:j])
            i = j
    return words


def _on_a_node(knob, *args, **kwargs):
    return knob._node is not None


def _knob_step(knob, *args, **kwargs):
    return "{}.{}".format(knob._node._knob_value("name"), knob._name)


# A change to a knob of a node is an undo step; one of a knob not on a node yet is not.
_recorded = recorded(_knob_step, when=_on_a_node)


def _parse_bool(knob, text):
    low = text.strip().lower()
    if low in ("1", "true", "yes", "on"):
        return True
    if low in ("0", "false", "no", "off", ""):
        return False
    raise ValueError("{}: {!r} is not a boolean".format(knob._name, text))


class Knob:
    """Base of all knobs: name, label, tooltip, flags and the owning node."""

    _class_name = None  # what Class() answers; the Python class name unless set
    # Undo sees a knob before it changes; one without a value yet is still being made.
    __setattr__ = setattr_hook
    _undo_complete = "_value"
    _undo_is_node = False

    def __init__(self, name, label=None, *args):
        if not isinstance(name, str):
            raise TypeError("a knob name must be a text")
        self._name = name
        self._label = "" if label is None else _check_text(self, label)
        self._tooltip = ""
        self._flags = 0
        self._node = None
        # The value as a read script wrote it, when it is more than this knob holds (an expression).
        self._raw = None
        self._value = self._initial_value(*args)

    def __getattribute__(self, attr):
        # A knob of a deleted node is as dead as the node's handle.
        if not attr.startswith("_"):
            node = object.__getattribute__(self, "_node")
            if node is not None and not object.__getattribute__(node, "_alive"):
                raise ValueError(DEAD_HANDLE)
        return object.__getattribute__(self, attr)

    def __repr__(self):
        return "<{} {!r}>".format(self._class_name or type(self).__name__, self._name)

    # -- subclass hooks -------------------------------------------------------------------------
    def _initial_value(self, *args):
        return None

    def _coerce(self, value):
        return value

    def _changed(self):
        """Called after every value change; the node's own knobs react here (name, selection)."""

    # -- identity -------------------------------------------------------------------------------
    def Class(self):
        return self._class_name or type(self).__name__

    def name(self):
        return self._name

    def node(self):
        return self._node

    def label(self):
        return self._label

    @_recorded
    def setLabel(self, label):
        self._label = _check_text(self, label)

    def tooltip(self):
        return self._tooltip

    @_recorded
    def setTooltip(self, tooltip):
        self._tooltip = _check_text(self, tooltip)

    # -- flags ----------------------------------------------------------------------------------
    @_recorded
    def setFlag(self, flag):
        self._flags |= int(flag)

    @_recorded
    def clearFlag(self, flag):
        self._flags &= ~int(flag)

    def getFlag(self, flag):
        return bool(self._flags & int(flag))

    def setVisible(self, visible):
        if visible:
            self.clearFlag(INVISIBLE)
        else:
            self.setFlag(INVISIBLE)

    def visible(self):
        return not self._flags & INVISIBLE

    def setEnabled(self, enabled):
        if enabled:
            self.clearFlag(DISABLED)
        else:
            self.setFlag(DISABLED)

    def enabled(self):
        return not self._flags & DISABLED

    # -- value ----------------------------------------------------------------------------------
    def value(self):
        return self._value

    def getValue(self):
        return self.value()

    @_recorded
    def setValue(self, value):
        self._value = self._coerce(value)
        self._raw = None
        self._changed()
        return True

    def fromScript(self, text):
        """Sets the value from its text form, as a saved script or `createNode`'s args give it."""
        return self.setValue(self._from_text(_check_text(self, text)))

    def toScript(self):
        return self._raw if self._raw is not None else self._script_text()

    def _script_text(self):
        value = self.value()
        return "" if value is None else str(value)

    def _from_text(self, text):
        return text


class Tab_Knob(Knob):
    """Starts a tab; the knobs after it, up to the next tab, stand on it."""

    def _initial_value(self, kind=0):
        return None

    def setValue(self, value):
        return True


# ---------------------------------------------------------------------------------------------
# Text with [commands]: what `value()` of a text knob gives, and which nodes an expression names
# ---------------------------------------------------------------------------------------------

# How deep [value ...] may lead from one text knob into others before the text is left as typed:
# a label that shows itself would otherwise never end.
_MAX_EVAL_DEPTH = 8
_eval_depth = [0]

_WORD = r"[A-Za-z_][A-Za-z0-9_]*"
# A knob named by node path and knob name in an expression, perhaps with a channel after it:
# Grade2.mix, parent.Blur1.size, Grade2.white.r.
_DOTTED = re.compile(r"(?<![\w.$]){w}(?:\.{w})+".format(w=_WORD))


def _bracket_commands(text):
    """(start, end, command) of each top-level [command] of `text`; a backslash escapes a bracket."""
    found, depth, start, i = [], 0, None, 0
    while i < len(text):
        char = text[i]
        if char == "\\":
            i += 2
            continue
        if char == "[":
            if depth == 0:
                start = i
            depth += 1
        elif char == "]" and depth:
            depth -= 1
            if depth == 0:
                found.append((start, i + 1, text[start + 1:i]))
        i += 1
    return found


def _no_path(group, parts):
    return None


# How a dotted path ("Group1.Blur1") leads from a group to a node: groups are the graph's, a layer
# above the knobs, which hands its look-up in when it loads (`use_path_finder`).
_find_path = _no_path


def use_path_finder(find):
    """Makes `find(group, names)` the look-up that knob expressions use to name other nodes."""
    global _find_path
    _find_path = find


def _resolve_node(node, parts):
    """The node that `parts` (a dotted node path from an expression) names, seen from `node`: a
    path leads from the node's group into groups by name, as toNode's does; `parent` is that group
    itself (again for each further `parent`), `root` the script's root, `this` the node."""
    if node is None:
        return None
    if not parts or parts == ["this"]:
        return node
    if parts[0] == "root":
        return _find_path(STATE.root, parts[1:])
    start = node._parent
    if parts[0] == "parent":
        parts = parts[1:]
        while parts and parts[0] == "parent" and start is not None:
            start, parts = start._parent, parts[1:]
        if start is None or not parts:
            return start
    return None if start is None else _find_path(start, parts)


def _resolve_knob(knob, reference):
    """The knob that `reference` names ("mix", "Grade2.mix", "root.name"), seen from `knob`."""
    parts = reference.split(".")
    node = _resolve_node(knob._node, parts[:-1])
    return None if node is None else node._knob_obj(parts[-1])


def _value_text(knob):
    """A knob's value as the [value ...] command gives it."""
    if isinstance(knob, String_Knob):
        return knob.value()
    if isinstance(knob, Array_Knob):
        value = knob.value()
        return " ".join("{:g}".format(v) for v in value) if isinstance(value, list) \
            else "{:g}".format(value)
    if isinstance(knob, Boolean_Knob):
        return "1" if knob._value else "0"
    return knob._script_text()


def _run_command(knob, command):
    words = command.split()
    if len(words) == 2 and words[0] in ("value", "knob"):
        target = _resolve_knob(knob, words[1])
        if target is not None:
            return _value_text(target) if words[0] == "value" else target.toScript()
    return None


def evaluate_text(knob, text):
    """`text` with each [value k] and [knob k] it holds replaced; a command this host does not
    know, or one naming no knob, stays as typed."""
    if "[" not in text or _eval_depth[0] >= _MAX_EVAL_DEPTH:
        return text
    _eval_depth[0] += 1
    try:
        out, last = [], 0
        for start, end, command in _bracket_commands(text):
            result = _run_command(knob, command.strip())
            out.append(text[last:start])
            out.append(text[start:end] if result is None else result)
            last = end
        out.append(text[last:])
        return "".join(out)
    finally:
        _eval_depth[0] -= 1


def referenced_nodes(knob):
    """The nodes an expression or a [command] in the knob's text names, other than its own."""
    texts = []
    if isinstance(knob, String_Knob) and not isinstance(knob, (PyScript_Knob, PythonKnob,
                                                               Text_Knob)):
        texts += [command for _, _, command in _bracket_commands(knob._value or "")]
    if knob._raw is not None:
        texts.append(knob._raw)
    found = []
    for text in texts:
        for match in _DOTTED.finditer(text):
            parts = match.group(0).split(".")
            # The last part names a knob, or a channel after the knob.
            for path in (parts[:-1], parts[:-2]):
                target = _resolve_node(knob._node, path) if path else None
                if target is not None:
                    break
            if target is not None and target is not knob._node and target not in found:
                found.append(target)
    return found


class String_Knob(Knob):
    """Text. `value()` and `getValue()` give it evaluated, `getText()` and `toScript()` as typed."""

    # Knobs whose text is code or a caption: their value is the text as typed.
    _evaluated = True

    def _initial_value(self, text=""):
        return _check_text(self, text)

    def _coerce(self, value):
        return _check_text(self, value)

    def value(self):
        if not self._evaluated or self._value is None:
            return self._value
        return evaluate_text(self, self._value)

    def getText(self):
        return self._value

    def setText(self, text):
        return self.setValue(text)

    def _script_text(self):
        return self._value or ""


class Text_Knob(String_Knob):
    """A label with a text beside it; the text is its value."""

    _evaluated = False


class EvalString_Knob(String_Knob):
    def evaluate(self):
        return self.value()


class Multiline_Eval_String_Knob(EvalString_Knob):
    pass


class File_Knob(EvalString_Knob):
    pass


class PythonKnob(String_Knob):
    """A text knob that holds Python source."""

    _evaluated = False


class PyScript_Knob(String_Knob):
    """A button whose value is the Python command that pressing it runs."""

    _evaluated = False

    def _initial_value(self, command=""):
        return "" if command is None else _check_text(self, command)

    def command(self):
        return self._value

    def setCommand(self, command):
        self.setValue(command)

    def execute(self):
        """Runs the command as a press of the button would; its failures propagate."""
        _script.run_knob_command(self)


class Boolean_Knob(Knob):
    def _initial_value(self, value=False):
        return bool(value)

    def _coerce(self, value):
        return bool(_check_number(self, value)) if not isinstance(value, bool) else value

    def getValue(self):
        return 1.0 if self._value else 0.0

    def _script_text(self):
        return "true" if self._value else "false"

    def _from_text(self, text):
        return _parse_bool(self, text)


class Int_Knob(Knob):
    """An integer; setting a float truncates it. `getValue()` gives a float, as the host does."""

    def _initial_value(self, value=0):
        return int(_check_number(self, value))

    def _coerce(self, value):
        return int(_check_number(self, value))

    def getValue(self):
        return float(self._value)

    def _from_text(self, text):
        return int(float(text))


class ColorChip_Knob(Int_Knob):
    """A colour packed as 0xRRGGBBAA in an int; 0 means the class's own colour."""

    def _coerce(self, value):
        return int(_check_number(self, value)) & 0xFFFFFFFF


class Array_Knob(Knob):
    """One or more floats. A single value stands for all channels, as the host's knobs show it."""

    _dims = 1
    _default = 0.0

    def _initial_value(self, value=None):
        return [float(self._default)] * self._dims if value is None else self._coerce(value)

    def _coerce(self, value):
        if isinstance(value, (list, tuple)):
            if len(value) != self._dims:
                raise ValueError("{}: {} values expected".format(self._name, self._dims))
            return [float(_check_number(self, v)) for v in value]
        return [float(_check_number(self, value))] * self._dims

    def value(self, index=None):
        if index is not None:
            return self._value[index]
        if len(set(self._value)) == 1:
            return self._value[0]
        return list(self._value)

    def getValue(self, index=None):
        return self.value(index)

    @_recorded
    def setValue(self, value, index=None):
        if index is None:
            return super().setValue(value)
        self._value[index] = float(_check_number(self, value))
        self._raw = None
        self._changed()
        return True

    def dimensions(self):
        return self._dims

    @_recorded
    def setExpression(self, expression, channel=-1, view=None):
        """Links the value (or one channel of it) to an expression such as "Grade2.mix".

        This host writes, copies and reads the expression back and knows which nodes it names
        (`Node.dependencies`), but does not compute it: the value stays what it was."""
        _check_text(self, expression)
        channel = operator.index(channel)
        if channel < 0:
            self._raw = "{{" + expression + "}}"
        else:
            if channel >= self._dims:
                raise IndexError("{}: no channel {}".format(self._name, channel))
            parts = ["{:g}".format(v) for v in self._value]
            parts[channel] = "{" + expression + "}"
            self._raw = "{" + " ".join(parts) + "}"
        self._changed()
        return True

    def hasExpression(self, index=-1):
        return self._raw is not None

    def _script_text(self):
        value = self.value()
        if isinstance(value, list):
            return "{" + " ".join("{:g}".format(v) for v in value) + "}"
        return "{:g}".format(value)

    def _from_text(self, text):
        words = tcl_words(text)
        if len(words) == 1 and "{" not in text:
            return float(words[0])
        words = tcl_words(words[0]) if len(words) == 1 else words
        return [float(w) for w in words] if len(words) > 1 else float(words[0])


class Double_Knob(Array_Knob):
    pass


class WH_Knob(Array_Knob):
    _dims = 2


class XY_Knob(Array_Knob):
    _dims = 2


class Color_Knob(Array_Knob):
    _dims = 3


class AColor_Knob(Array_Knob):
    _dims = 4


class XYZ_Knob(Array_Knob):
    _dims = 3


class UV_Knob(Array_Knob):
    _dims = 2


class BBox_Knob(Array_Knob):
    """x, y, r and t of a box."""

    _dims = 4


class Link_Knob(Knob):
    """Shows a knob of another node of the group; its value names that knob (`Blur1.size`)."""

    def _initial_value(self, link=""):
        return _check_text(self, link)

    def _coerce(self, value):
        return _check_text(self, value)

    def getLink(self):
        return self._value

    def setLink(self, link):
        self.setValue(link)

    def makeLink(self, node, knob):
        self.setValue("{}.{}".format(node, knob))


class Enumeration_Knob(Knob):
    """A pulldown. `value()` is the current item, `getValue()` its index as a float.

    `setValue` takes an item, an index, or the text of an index ("2" or "2.0") that is not itself an
    item: the host accepts a pulldown's numeric form wherever it takes a value.
    """

    def __init__(self, name, label=None, items=()):
        self._items = [str(i) for i in items]
        super().__init__(name, label)

    def _initial_value(self):
        return 0

    def _coerce(self, value):
        if isinstance(value, str):
            if value in self._items:
                return self._items.index(value)
            try:
                number = float(value)
            except ValueError:
                raise ValueError("{}: {!r} is not one of {}".format(self._name, value, self._items))
            value = number
        _check_number(self, value)
        if value != int(value) or not 0 <= int(value) < len(self._items):
            raise ValueError("{}: no item at index {!r}".format(self._name, value))
        return int(value)

    def value(self):
        return self._items[self._value] if self._items else ""

    def getValue(self):
        return float(self._value)

    def values(self):
        return list(self._items)

    def numValues(self):
        return len(self._items)

    def enumName(self, index):
        return self._items[index]

    @_recorded
    def setValues(self, items):
        current = self.value()
        self._items = [str(i) for i in items]
        self._value = self._items.index(current) if current in self._items else 0


class Format:
    """An image format: size, pixel aspect and the name the host lists it under."""

    def __init__(self, width, height, name="", pixelAspect=1.0):
        self._width, self._height = int(width), int(height)
        self._name, self._aspect = name, float(pixelAspect)

    def width(self):
        return self._width

    def height(self):
        return self._height

    def name(self):
        return self._name

    def pixelAspect(self):
        return self._aspect

    def __eq__(self, other):
        return isinstance(other, Format) and (self._width, self._height, self._name, self._aspect) == (
            other._width, other._height, other._name, other._aspect)

    def __hash__(self):
        return hash((self._width, self._height, self._name))

    def __repr__(self):
        return "<Format {} {}x{}>".format(self._name or "(unnamed)", self._width, self._height)


FORMATS = [
    Format(1920, 1080, "HD_1080"),
    Format(1280, 720, "HD_720"),
    Format(3840, 2160, "UHD_4K"),
    Format(2048, 1556, "2K_Super_35(full-ap)"),
    Format(2048, 1080, "2K_DCP"),
    Format(1024, 1024, "square_1K"),
    Format(2048, 2048, "square_2K"),
    Format(720, 576, "PAL", 1.09),
    Format(720, 486, "NTSC", 0.91),
]

# New scripts start in HD, as a current host's preferences do out of the box.
DEFAULT_FORMAT = FORMATS[0]


def find_format(text):
    for fmt in FORMATS:
        if fmt.name() == text:
            return fmt
    words = text.split()
    if len(words) >= 2:
        return Format(int(words[0]), int(words[1]), " ".join(words[2:]))
    raise ValueError("unknown format {!r}".format(text))


class Format_Knob(Knob):
    """Holds a Format; `setValue` takes a Format or the name of a known one."""

    def _initial_value(self):
        return DEFAULT_FORMAT

    def _coerce(self, value):
        if isinstance(value, Format):
            return value
        return find_format(_check_text(self, value))

    def _script_text(self):
        return self._value.name() or "{} {}".format(self._value.width(), self._value.height())


KNOB_CLASSES = {cls.__name__: cls for cls in (
    Knob, Tab_Knob, String_Knob, Text_Knob, Multiline_Eval_String_Knob, EvalString_Knob, File_Knob,
    PythonKnob, PyScript_Knob, Boolean_Knob, Int_Knob, ColorChip_Knob, Array_Knob, Double_Knob,
    WH_Knob, XY_Knob, Color_Knob, AColor_Knob, Enumeration_Knob, Format_Knob, XYZ_Knob, UV_Knob,
    BBox_Knob, Link_Knob)}


def formats():
    return list(FORMATS)
