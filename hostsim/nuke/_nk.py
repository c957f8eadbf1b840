"""The host's script text: reading it into nodes and writing nodes as it.

A script is a list of commands, one a line, in the host's TCL syntax: words separated by blanks,
`{braces}` keep a word whole across blanks and lines, `"quotes"` take backslash escapes. A command
`Class { knob lines }` makes a node, which takes its inputs from the stack (input 0 on top: `inputs N`
says how many, one if not said) and leaves itself on it; `set N [stack 0]` names the top, `push $N` and
`push 0` push a node or an empty input. A Group's block is followed by its children and `end_group`.
Copies start with `set cut_paste_input [stack 0]`, which names what a paste hooks onto.

Classes this host does not know become opaque nodes keeping their knob lines; knob lines it does not
know stay with their node, and unknown user knobs keep their declaration: all are written back as read.

Mask inputs are counted apart: `inputs 2+1` is two inputs and a mask, three nodes taken from the stack
in input order. `clone $C {...}` makes a node like the one `set C [stack 0]` named, with the knob lines
of its own block (its position, mostly) on top; it is written back as a clone while its knobs match
the original's (a change to one is not passed on to the other here). A `Gizmo` block, like a Group's, is followed by its
nodes and `end_group`. The host defines `cut_paste_input` itself: a paste sets it to the node it lands
on, anything else to an empty input.

Layer: script text, on the graph (`_graph`, `_knobs`) and the bottom layer (`_host`).
"""

import re

from . import _graph as G
from . import _knobs as K
from ._host import NUKE_VERSION_MAJOR, NUKE_VERSION_MINOR, NUKE_VERSION_RELEASE


class ScriptError(ValueError):
    """The text is not script text this host can read."""


# ---------------------------------------------------------------------------------------------
# Words and commands
# ---------------------------------------------------------------------------------------------

_ESCAPES = {"n": "\n", "t": "\t", "r": "\r"}


class Word:
    """One word of a command: its value (braces taken off, escapes resolved) and its source text."""

    __slots__ = ("value", "raw", "kind")

    def __init__(self, value, raw, kind):
        self.value, self.raw, self.kind = value, raw, kind

    def __repr__(self):
        return "Word({!r})".format(self.raw)


# What the scanners stop at: in braces, the braces and escapes; in quotes, the quote, escapes and a
# command in brackets; a bare word with none of those ends at a blank or separator.
_BRACE_MARKS = re.compile(r"[{}\\]")
_QUOTE_MARKS = re.compile(r'["\\\[]')
_SIMPLE_BARE = re.compile(r"[^ \t\r\n;\\\[{\"]+(?=[ \t\r\n;]|$)")


class _Lexer:
    def __init__(self, text):
        self.text, self.pos, self.line = text, 0, 1

    def fail(self, what):
        raise ScriptError("line {}: {}".format(self.line, what))

    def commands(self):
        """Every command of the text as (line, [Word, ...]); comments are left out."""
        result = []
        text, n = self.text, len(self.text)
        while True:
            # Blanks, empty lines and separators between commands.
            while self.pos < n and text[self.pos] in " \t\r\n;":
                if text[self.pos] == "\n":
                    self.line += 1
                self.pos += 1
            if self.pos >= n:
                return result
            if text[self.pos] == "#":
                while self.pos < n and text[self.pos] != "\n":
                    self.pos += 1
                continue
            line, words = self.line, []
            while self.pos < n and text[self.pos] not in "\n;":
                if text[self.pos] in " \t\r":
                    self.pos += 1
                    continue
                if text[self.pos] == "\\" and text[self.pos + 1:self.pos + 2] == "\n":
                    self.pos += 2  # a line continued
                    self.line += 1
                    continue
                words.append(self.word())
            if words:
                result.append((line, words))

    def word(self):
        text, start = self.text, self.pos
        first = text[start]
        if first == "{":
            end = self._brace_end(start)
            self.pos = end + 1
            inner = text[start + 1:end]
            self.line += inner.count("\n")
            return Word(inner, text[start:end + 1], "brace")
        if first == '"':
            value, end = self._quoted(start)
            self.pos = end + 1
            raw = text[start:end + 1]
            self.line += raw.count("\n")
            return Word(value, raw, "quote")
        simple = _SIMPLE_BARE.match(text, start)
        if simple:
            self.pos = simple.end()
            return Word(simple.group(), simple.group(), "bare")
        out, i, n = [], start, len(text)
        while i < n and text[i] not in " \t\r\n;":
            if text[i] == "\\" and i + 1 < n:
                out.append(_ESCAPES.get(text[i + 1], text[i + 1]))
                i += 2
            elif text[i] == "[":
                end = self._bracket_end(i)
                out.append(text[i:end + 1])
                i = end + 1
            else:
                out.append(text[i])
                i += 1
        self.pos = i
        return Word("".join(out), text[start:i], "bare")

    def _brace_end(self, start):
        depth, pos, text = 0, start, self.text
        find = _BRACE_MARKS.search
        while True:
            mark = find(text, pos)
            if mark is None:
                self.fail("a { without its }")
            i = mark.start()
            c = text[i]
            if c == "\\":
                pos = i + 2
                continue
            if c == "{":
                depth += 1
            else:
                depth -= 1
                if depth == 0:
                    return i
            pos = i + 1

    def _bracket_end(self, start):
        """The `]` closing the command substitution at `start`; quotes and braces inside it count."""
        depth, i, n = 0, start, len(self.text)
        while i < n:
            c = self.text[i]
            if c == "\\":
                i += 2
                continue
            if c == "[":
                depth += 1
            elif c == "]":
                depth -= 1
                if depth == 0:
                    return i
            elif c == "{":
                i = self._brace_end(i)
            elif c == '"':
                i = self._quoted(i)[1]
            i += 1
        self.fail("a [ without its ]")

    def _quoted(self, start):
        """The value of the quoted word at `start` and the index of its closing quote. A `[...]`
        inside is kept as written: quotes in it do not end the word."""
        out, i, n = [], start + 1, len(self.text)
        text = self.text
        find = _QUOTE_MARKS.search
        while True:
            mark = find(text, i)
            if mark is None:
                self.fail('a " without its closing "')
            j = mark.start()
            out.append(text[i:j])
            c = text[j]
            if c == '"':
                return "".join(out), j
            if c == "\\" and j + 1 < n:
                out.append(_ESCAPES.get(text[j + 1], text[j + 1]))
                i = j + 2
            elif c == "[":
                end = self._bracket_end(j)
                out.append(text[j:end + 1])
                i = end + 1
            else:
                # A backslash that ends the text.
                self.fail('a " without its closing "')


def commands(text):
    return _Lexer(text).commands()


def split_words(text):
    """Every word of `text`, over all its lines, as Words."""
    return [word for _, words in commands(text) for word in words]


_BARE = re.compile(r'^[^\s"{}\[\]$\\;#]+$')


def quote(text):
    """`text` as one word: bare when it can be, else quoted with what TCL would read escaped."""
    if _BARE.match(text):
        return text
    out = []
    for c in text:
        if c in '\\"[]{}$':
            out.append("\\" + c)
        elif c == "\n":
            out.append("\\n")
        elif c == "\t":
            out.append("\\t")
        elif c == "\r":
            out.append("\\r")
        else:
            out.append(c)
    return '"' + "".join(out) + '"'


def number(value):
    """A float as the host writes it: the shortest text that reads back the same, no `.0`."""
    value = float(value)
    if value.is_integer() and abs(value) < 1e15:
        return str(int(value))
    return repr(value)


# ---------------------------------------------------------------------------------------------
# Knob values as text
# ---------------------------------------------------------------------------------------------

# The ids of user knobs in `addUserKnob {ID name ...}`, and the flags they may carry. 44 to 46 are
# this host's own: it needs an id for each of its knob classes to read every user knob back as itself.
KNOB_IDS = {
    1: "String_Knob", 2: "File_Knob", 3: "Int_Knob", 4: "Enumeration_Knob", 6: "Boolean_Knob",
    7: "Double_Knob", 12: "XY_Knob", 13: "XYZ_Knob", 14: "WH_Knob", 15: "BBox_Knob",
    17: "Format_Knob", 18: "Color_Knob", 19: "AColor_Knob", 20: "Tab_Knob", 22: "PyScript_Knob",
    26: "Text_Knob", 30: "UV_Knob", 41: "Link_Knob", 43: "Multiline_Eval_String_Knob",
    44: "EvalString_Knob", 45: "PythonKnob", 46: "ColorChip_Knob",
}
KNOB_CLASS_IDS = {name: ident for ident, name in KNOB_IDS.items()}
FLAGS = {"INVISIBLE": K.INVISIBLE, "STARTLINE": K.STARTLINE, "ENDLINE": K.ENDLINE,
         "DISABLED": K.DISABLED, "DO_NOT_WRITE": K.DO_NOT_WRITE, "READ_ONLY": K.READ_ONLY}


def knob_text(knob):
    """The knob's value as one word of script text."""
    if knob._raw is not None:
        return knob._raw
    if isinstance(knob, K.Array_Knob):
        values = knob._value
        if len(set(values)) == 1:
            return number(values[0])
        return "{" + " ".join(number(v) for v in values) + "}"
    if isinstance(knob, K.ColorChip_Knob):
        return "0x{:x}".format(knob._value)
    if isinstance(knob, K.Int_Knob):
        return str(knob._value)
    if isinstance(knob, K.Boolean_Knob):
        return "true" if knob._value else "false"
    if isinstance(knob, K.Enumeration_Knob):
        return quote(knob.value())
    if isinstance(knob, K.Format_Knob):
        fmt = knob._value
        return quote("{w} {h} 0 0 {w} {h} {a} {n}".format(
            w=fmt.width(), h=fmt.height(), a=number(fmt.pixelAspect()), n=fmt.name()).rstrip())
    return quote(knob._value or "")


def _parse_format(text):
    words = text.split()
    if len(words) >= 7 and all(_is_number(w) for w in words[:7]):
        return K.Format(int(float(words[0])), int(float(words[1])), " ".join(words[7:]),
                        float(words[6]))
    return K.find_format(text)


def _is_number(text):
    try:
        float(text)
    except ValueError:
        return False
    return True


def read_knob_value(knob, word):
    """Gives the knob the value of `word`. A value it cannot hold as its own type (an expression,
    an animation, an item it does not offer) is kept as written, and written back so."""
    text = word.value
    if getattr(knob, "_decl", None) is not None:
        knob._raw = word.raw
        return
    try:
        if isinstance(knob, K.Array_Knob):
            parts = split_words(text) if word.kind == "brace" else [word]
            if any(p.kind == "brace" for p in parts):
                raise ValueError("an expression")
            values = [float(p.value) for p in parts]
            if len(values) == 1:
                values = values * knob._dims
            if len(values) != knob._dims:
                raise ValueError("{} values".format(len(values)))
            knob._value = values
        elif isinstance(knob, K.ColorChip_Knob):
            knob._value = int(text, 0) & 0xFFFFFFFF
        elif isinstance(knob, K.Int_Knob):
            knob._value = int(float(text))
        elif isinstance(knob, K.Boolean_Knob):
            knob._value = K._parse_bool(knob, text)
        elif isinstance(knob, K.Enumeration_Knob):
            knob._value = knob._coerce(text)
        elif isinstance(knob, K.Format_Knob):
            knob._value = _parse_format(text)
        elif isinstance(knob, K.Tab_Knob):
            pass
        else:
            knob._value = text
        knob._raw = None
    except (ValueError, TypeError, ScriptError):
        knob._raw = word.raw


# ---------------------------------------------------------------------------------------------
# Writing
# ---------------------------------------------------------------------------------------------

_DEFAULTS = {}


def _class_defaults(node):
    """Text of each own knob of a new node of the node's class, to leave out what is unchanged."""
    key = node._class
    if key not in _DEFAULTS:
        defaults = {}
        for knob in G._node_knobs(node._info):
            defaults[knob._name] = knob_text(knob)
        _DEFAULTS[key] = defaults
    return _DEFAULTS[key]


_ALWAYS = ("name", "xpos", "ypos")


def _own_knobs(node):
    """The node's knobs split into its class's own and the user's, in their order."""
    if isinstance(node, G.Root):
        return list(node._knobs), []
    own_names = set(_class_defaults(node))
    own, user, seen = [], [], set()
    for knob in node._knobs:
        if knob._name in own_names and knob._name not in seen and not user \
                and not getattr(knob, "_decl", None):
            own.append(knob)
            seen.add(knob._name)
        else:
            user.append(knob)
    return own, user


def _user_knob_lines(knob):
    lines = []
    decl = getattr(knob, "_decl", None)
    if decl is not None:
        lines.append("addUserKnob {" + decl + "}")
        if knob._raw is not None:
            lines.append("{} {}".format(quote(knob._name), knob._raw))
        elif knob._value:
            lines.append("{} {}".format(quote(knob._name), quote(str(knob._value))))
        return lines
    words = [str(KNOB_CLASS_IDS.get(knob.Class(), 1)), quote(knob._name)]
    if knob._label != knob._name:
        words += ["l", quote(knob._label)]
    if knob._tooltip:
        words += ["t", quote(knob._tooltip)]
    value_in_declaration = isinstance(knob, (K.PyScript_Knob, K.Text_Knob, K.Link_Knob))
    if value_in_declaration and knob._value:
        words += ["T", quote(knob._value)]
    if isinstance(knob, K.Enumeration_Knob):
        words += ["M", "{" + " ".join(quote(i) for i in knob._items) + "}"]
    for name, bit in FLAGS.items():
        if knob._flags & bit:
            words.append("+" + name)
    words += getattr(knob, "_decl_extra", ())
    lines.append("addUserKnob {" + " ".join(words) + "}")
    if not value_in_declaration and not isinstance(knob, K.Tab_Knob):
        text = knob_text(knob)
        fresh = K.KNOB_CLASSES[knob.Class()]("x", "x") if knob.Class() in K.KNOB_CLASSES else None
        if knob._raw is not None or fresh is None or knob_text(fresh) != text:
            lines.append("{} {}".format(quote(knob._name), text))
    return lines


# The input that is a class's mask, for the classes this host knows that have one.
MASK_INPUT = {"Blur": 1, "Grade": 1, "Transform": 1, "Merge2": 2}


def inputs_text(node, count):
    """The count of `inputs`, with the masks apart (`2+1`) as the host writes them."""
    index = MASK_INPUT.get(node._class)
    if index is not None:
        masks = 1 if count > index else 0
    else:
        read, masks = getattr(node, "_mask_inputs", (count, 0))
        masks = max(0, min(masks, count - read))
    return "{}+{}".format(count - masks, masks) if masks else str(count)


def _node_lines(node, inputs):
    lines = []
    if inputs != 1:
        lines.append("inputs " + inputs_text(node, inputs))
    own, user = _own_knobs(node)
    defaults = {} if isinstance(node, G.Root) else _class_defaults(node)
    for knob in own:
        if isinstance(knob, G._SelectedKnob):
            if knob._value:
                lines.append("selected true")
            continue
        text = knob_text(knob)
        default = defaults.get(knob._name)
        if knob._name in _ALWAYS or isinstance(knob, K.Format_Knob) or default is None \
                or default != text:
            lines.append("{} {}".format(knob._name, text))
    for name, raw in node._extra:
        lines.append("{} {}".format(name, raw) if raw is not None else name)
    for knob in user:
        lines += _user_knob_lines(knob)
    return lines


class _Writer:
    """Writes nodes as stack commands: each node after its inputs, input 0 pushed last so that it is
    on top; a node used again further down is named with `set` and pushed with `push $name`."""

    def __init__(self, hook):
        self.hook = hook  # whether the first input from outside takes $cut_paste_input
        self.out = []
        self.variables = 0
        self.free = False  # whether the node on top of the stack is there for anyone to take

    def block(self, indent, cls, body):
        self.out.append("{}{} {{".format(indent, cls))
        self.out.extend("{} {}".format(indent, line) for line in body)
        self.out.append(indent + "}")

    def group(self, nodes, indent):
        """Writes `nodes`, all of one group, in their order unless an input has to come first."""
        self.inside = {id(n) for n in nodes}
        self.ops, self.done, self.counts, self.free = [], set(), {}, False
        for node in nodes:
            if id(node) not in self.done:
                self.emit(node)
                # Nothing waits for it: the next node may take it from the top as its input 0.
                self.free = True
        ops, counts = self.ops, self.counts
        names = {}
        for kind, node in ops:
            if kind == "push" and id(node) not in names:
                self.variables += 1
                names[id(node)] = "N{}".format(self.variables)
        # Clones of a node written here are written as such, after it.
        cloned = {id(n._clone_of) for n in nodes if getattr(n, "_clone_of", None) is not None}
        clone_names = {}
        for kind, node in ops:
            if kind == "hook":
                self.out.append(indent + "push $cut_paste_input")
            elif kind == "empty":
                self.out.append(indent + "push 0")
            elif kind == "push":
                self.out.append("{}push ${}".format(indent, names[id(node)]))
            else:
                original = getattr(node, "_clone_of", None)
                if id(original) in clone_names and clone_lines(node) == clone_lines(original):
                    self.clone(node, clone_names[id(original)], counts[id(node)], indent)
                else:
                    self.node(node, counts[id(node)], indent)
                if id(node) in cloned:
                    self.variables += 1
                    clone_names[id(node)] = "C{}".format(self.variables)
                    self.out.append("{}set {} [stack 0]".format(indent, clone_names[id(node)]))
                if id(node) in names:
                    self.out.append("{}set {} [stack 0]".format(indent, names[id(node)]))

    def op(self, kind, node=None):
        self.ops.append((kind, node))
        self.free = False

    def emit(self, node):
        """Writes what `node` needs on the stack, then the node, which leaves itself on top."""
        count = len(node._inputs)
        for i in reversed(range(count)):
            source = node._inputs[i]
            if source is None or id(source) not in self.inside:
                self.op("hook" if i == 0 and self.take_hook() else "empty")
            elif id(source) not in self.done:
                self.emit(source)
            elif not (i == 0 and self.free and self.ops[-1] == ("node", source)):
                self.op("push", source)
        if count == 0 and node.maxInputs() > 0 and self.take_hook():
            # A chain's first node without an input takes what a paste lands on.
            self.op("hook")
            count = 1
        self.op("node", node)
        self.counts[id(node)] = count
        self.done.add(id(node))

    def take_hook(self):
        hook, self.hook = self.hook, False
        return hook

    def clone(self, node, variable, inputs, indent):
        own = [line for line in _node_lines(node, inputs) if line.split(" ", 1)[0] in _CLONE_OWN
               and not line.startswith("name ")]
        self.block(indent, "clone $" + variable, own)

    def node(self, node, inputs, indent):
        self.block(indent, node._class, _node_lines(node, inputs))
        if isinstance(node, G.Group):
            # What a paste lands on is outside: nothing inside a group takes it.
            state = self.inside, self.ops, self.done, self.counts, self.hook, self.free
            self.hook = False
            self.group(node._children, indent + " ")
            self.inside, self.ops, self.done, self.counts, self.hook, self.free = state
            self.out.append(indent + "end_group")


def _version():
    return "version {}.{} v{}".format(NUKE_VERSION_MAJOR, NUKE_VERSION_MINOR, NUKE_VERSION_RELEASE)


def write_copy(nodes):
    """The text `nodeCopy` writes: the nodes of one group, hooked to what a paste lands on."""
    writer = _Writer(hook=True)
    writer.out += ["set cut_paste_input [stack 0]", _version()]
    writer.group(nodes, "")
    return "\n".join(writer.out) + "\n"


def write_script(root, name):
    """The text of a saved script: the Root block, named `name`, then every node."""
    writer = _Writer(hook=False)
    writer.out.append(_version())
    lines = _node_lines(root, 0)
    writer.block("", "Root", ["name " + quote(name) if line.startswith("name ") else line
                              for line in lines])
    writer.out.extend(getattr(root, "_commands", ()))
    writer.group(root._children, "")
    return "\n".join(writer.out) + "\n"


def write_nodes(nodes):
    """The nodes alone, wired among themselves; what comes from outside is left empty."""
    writer = _Writer(hook=False)
    writer.group(nodes, "")
    return "\n".join(writer.out) + "\n"


# ---------------------------------------------------------------------------------------------
# Reading
# ---------------------------------------------------------------------------------------------


class Parsed:
    """What a text holds: its commands, checked to be script text, ready to make nodes from."""

    def __init__(self, text):
        self.commands = []  # (words, knob lines of a node's block or None)
        self.root_body = None
        self.other = []  # commands that make no node (layers, layouts, ...), as written
        known = 0
        defined = set(HOST_VARIABLES)
        for line, words in commands(text):
            head = words[0]
            if head.kind != "bare":
                raise ScriptError("line {}: {} is not a command".format(line, head.raw[:40]))
            # As in TCL, a variable is read only after a `set`: a push of an unknown one (a file cut
            # off in the middle of a name, say) fails before any node is made.
            if head.value == "set" and len(words) >= 3:
                defined.add(words[1].value)
            elif head.value in ("push", "clone") and len(words) >= 2 \
                    and words[1].value.startswith("$") and words[1].value[1:] not in defined:
                raise ScriptError('line {}: can\'t read "{}": no such variable'.format(
                    line, words[1].value[1:]))
            if _is_node_command(words):
                known += 1
                body = _body(words[-1].value, line)
                if head.value == "Root":
                    self.root_body = body
                else:
                    self.commands.append((words, body))
                continue
            if head.value in ("set", "push", "end_group", "version"):
                known += 1
                self.commands.append((words, None))
            else:
                self.other.append(" ".join(w.raw for w in words))
        # Other commands (window layouts, knob defaults, ...) say nothing about nodes and are passed
        # over; a text with none of the above is no script at all.
        if not known:
            raise ScriptError("no nodes and no script in it")


# A block of knob lines: what tells a node of a class named in lower case (a studio's gizmo, say) from
# a command such as `add_layer {...}`.
_KNOB_LINES = re.compile(r"(?:^|\n)[ \t]*(?:name|xpos|inputs) ")


def _is_node_command(words):
    if len(words) == 3 and words[0].value == "clone":
        return words[2].kind == "brace"
    if len(words) != 2 or words[1].kind != "brace":
        return False
    return words[0].value[:1].isupper() or (
        G._NAME_RE.match(words[0].value) is not None and _KNOB_LINES.search(words[1].value) is not None)


def _body(text, line):
    """The knob lines of a node's block; a user knob's declaration is checked here already, so that
    a paste fails before it makes any node."""
    try:
        lines = [words for _, words in commands(text)]
        for words in lines:
            if words[0].value == "addUserKnob" and len(words) == 2:
                split_words(words[1].value)
            elif words[0].value == "inputs" and not _INPUTS.match(_second(words)):
                raise ScriptError("inputs {} is not a count".format(_second(words)))
    except ScriptError as error:
        raise ScriptError("in the block that starts on line {}: {}".format(line, error))
    return lines


_INPUTS = re.compile(r"^(\d+)(?:\+(\d+))?$")

# Classes whose block is followed by the nodes inside them and `end_group`.
GROUP_CLASSES = ("Group", "Gizmo")

# Variables the host defines before it reads a script.
HOST_VARIABLES = ("cut_paste_input",)


def _second(words):
    return words[1].value if len(words) == 2 else " ".join(w.raw for w in words[1:])


def _input_count(lines):
    """How many inputs a block takes from the stack, and how many of them are masks."""
    for words in lines:
        if words[0].value == "inputs" and len(words) == 2:
            match = _INPUTS.match(words[1].value)
            return int(match.group(1)), int(match.group(2) or 0)
    return 1, 0


_CLONE_OWN = ("inputs", "name", "xpos", "ypos", "selected")


def clone_lines(node):
    """The knob lines a clone shares with `node`: all but its inputs, name, place and selection."""
    return [line for line in _node_lines(node, 0) if line.split(" ", 1)[0] not in _CLONE_OWN]


class _Reader:
    def __init__(self, group, target, keep_selection):
        self.groups = [group]
        self.stacks = [[target]]
        self.vars = {"cut_paste_input": target}
        self.keep_selection = keep_selection
        self.created = []  # the nodes made at the top level, in file order
        self.links = []  # (node, input, source), made once every node exists

    def run(self, parsed):
        for words, body in parsed.commands:
            head = words[0].value
            if body is not None:
                if head == "clone":
                    self.clone(words[1].value, body)
                else:
                    self.make(head, body)
            elif head == "set" and len(words) >= 3:
                self.vars[words[1].value] = self.stack_top(words[2].value)
            elif head == "push" and len(words) == 2:
                ref = words[1].value
                if ref.startswith("$"):
                    self.stacks[-1].append(self.vars.get(ref[1:]))
                else:
                    self.stacks[-1].append(None)
            elif head == "end_group" and len(self.groups) > 1:
                self.groups.pop()
                self.stacks.pop()
        for node, i, source in self.links:
            # A Group knows how many inputs it has only once its Input nodes are made.
            if source is not None and source._parent is node._parent and i < node.maxInputs():
                node._set_input_raw(i, source)
        return self.created

    def stack_top(self, expression):
        match = re.match(r"^\[stack (\d+)\]$", expression.strip())
        stack = self.stacks[-1]
        if match and int(match.group(1)) < len(stack):
            return stack[-1 - int(match.group(1))]
        return None

    def make(self, cls, lines, info=None):
        group, stack = self.groups[-1], self.stacks[-1]
        count, masks = _input_count(lines)
        sources = []
        for _ in range(count + masks):
            sources.append(stack.pop() if stack else None)
        name = next((w[1].value for w in lines if w[0].value == "name" and len(w) == 2), None)
        name = name if name and G._NAME_RE.match(name) else None
        if cls in G.CLASSES:
            node = G.new_node(cls, group, name, info=info)
        elif cls in GROUP_CLASSES:
            # A group of a class of its own (a gizmo): a Group that answers its class.
            node = G.new_node("Group", group, name, info=G.opaque_info(cls))
            node._class = cls
        else:
            node = G.new_node(cls, group, name, info=info or G.opaque_info(cls))
        if masks:
            node._mask_inputs = (count, masks)
        read_body(node, lines)
        if not self.keep_selection:
            node._knob_obj("selected")._value = False
        for i, source in enumerate(sources):
            self.links.append((node, i, source))
        stack.append(node)
        if len(self.groups) == 1:
            self.created.append(node)
        if isinstance(node, G.Group):
            self.make_group(node)
        return node

    def clone(self, ref, lines):
        original = self.vars.get(ref[1:]) if ref.startswith("$") else None
        if original is None or not original._alive:
            # `clone node0x...|Class|id {...}`: the first of its clones, with all its knob lines.
            parts = ref.split("|")
            cls = parts[1] if len(parts) == 3 and parts[1] else "NoOp"
            node = self.make(cls, lines)
        else:
            shared = [words for _, words in commands("\n".join(clone_lines(original)))]
            node = self.make(original._class, shared + lines, info=original._info)
            node._clone_of = original
        if isinstance(node, G.Group):
            # A clone of a group is written without its nodes.
            self.groups.pop()
            self.stacks.pop()
        return node

    def make_group(self, node):
        self.groups.append(node)
        self.stacks.append([])


def read_body(node, lines):
    """Sets the node's knobs from the knob lines of its block; the name is the caller's."""
    own = {}
    for knob in node._knobs:
        own.setdefault(knob._name, knob)
    extra = []
    for words in lines:
        name = words[0].value
        if name == "inputs" or name == "name":
            continue
        if name == "addUserKnob" and len(words) == 2:
            knob = user_knob(words[1].value)
            node._attach(knob)
            own[knob._name] = knob
            continue
        knob = own.get(name)
        if knob is None or len(words) != 2:
            extra.append((name, " ".join(w.raw for w in words[1:]) if len(words) > 1 else None))
            continue
        read_knob_value(knob, words[1])
        if isinstance(knob, G._SelectedKnob) and knob._value:
            knob._changed()
    node._extra = tuple(extra)


def user_knob(declaration):
    """A knob from the declaration of `addUserKnob {ID name options...}`."""
    words = split_words(declaration)
    if len(words) < 2:
        raise ScriptError("addUserKnob {{{}}} names no knob".format(declaration))
    try:
        class_name = KNOB_IDS.get(int(words[0].value))
    except ValueError:
        class_name = None
    name = words[1].value
    if class_name is None:
        return _opaque_knob(name, declaration, words)
    cls = K.KNOB_CLASSES[class_name]
    knob = cls(name, name)
    extra, i = [], 2
    while i < len(words):
        key = words[i].value
        value = words[i + 1] if i + 1 < len(words) else None
        if key == "l" and value is not None:
            knob._label = value.value
            i += 2
        elif key == "t" and value is not None:
            knob._tooltip = value.value
            i += 2
        elif key == "T" and value is not None and isinstance(knob, (K.String_Knob, K.Link_Knob)):
            knob._value = value.value
            i += 2
        elif key == "M" and value is not None and isinstance(knob, K.Enumeration_Knob):
            knob._items = [w.value for w in split_words(value.value)]
            i += 2
        elif key[:1] == "+" and key[1:] in FLAGS:
            knob._flags |= FLAGS[key[1:]]
            i += 1
        else:
            extra.append(words[i].raw)
            i += 1
    knob._decl_extra = tuple(extra)
    return knob


def _opaque_knob(name, declaration, words):
    knob = K.Knob(name, name)
    for i, word in enumerate(words[2:-1], 2):
        if word.value == "l":
            knob._label = words[i + 1].value
        elif word.value == "t":
            knob._tooltip = words[i + 1].value
    for word in words[2:]:
        if word.value[:1] == "+" and word.value[1:] in FLAGS:
            knob._flags |= FLAGS[word.value[1:]]
    knob._decl = declaration
    knob._value = ""
    return knob


def parse(text, source):
    """Checks that `text` is script text; the failure names `source`."""
    try:
        return Parsed(text)
    except ScriptError as error:
        raise RuntimeError("{}: not a script this host can read ({})".format(source, error))


def load(parsed, group, target=None, keep_selection=False):
    """Makes the nodes of `parsed` in `group`, uniquely named there; `target` is what
    `$cut_paste_input` (and the first node's empty stack) stands for. Gives the top-level nodes."""
    return _Reader(group, target, keep_selection).run(parsed)


def load_root(parsed, root):
    if parsed.root_body is not None:
        read_body(root, parsed.root_body)
    # Layers, layouts and the like: written back after the Root block as they were read.
    root._commands = tuple(parsed.other)
