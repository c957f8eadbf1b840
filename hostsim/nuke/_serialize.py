"""Copy, paste, save and open: the graph as text.

The text is this host's own format: JSON with every knob of every node (class, name, label, tooltip,
flags and value, commands included, in knob order, so user knobs keep their place under their tabs),
positions, the connections among the written nodes, and a Group's contents recursively. A saved script
also carries the root's knobs. Connections to nodes that were not written are dropped; a paste hooks
the first node that has no input of its own onto the selected node instead, as the host does.
"""

import json
import os

from . import _graph as G
from . import _knobs as K
from ._state import STATE
from ._undo import forget, recorded

CLIPBOARD = "%clipboard%"
FORMAT = "hostsim-script"
VERSION = 1


# ---------------------------------------------------------------------------------------------
# Nodes to data and back
# ---------------------------------------------------------------------------------------------


def dump_nodes(nodes):
    index = {id(node): i for i, node in enumerate(nodes)}
    return [_dump_node(node, index) for node in nodes]


def _dump_node(node, index):
    data = {
        "class": node._class,
        "name": node.name(),
        "knobs": [knob._dump() for knob in node._knobs],
        "inputs": [None if source is None else index.get(id(source)) for source in node._inputs],
    }
    if node._class == "Viewer":
        data["viewer_active"] = list(node._viewer_active)
    if isinstance(node, G.Group):
        data["nodes"] = dump_nodes(node._children)
    return data


def to_text(nodes, root=None):
    data = {"format": FORMAT, "version": VERSION}
    if root is not None:
        data["root"] = [knob._dump() for knob in root._knobs]
    data["nodes"] = dump_nodes(nodes)
    return json.dumps(data, indent=1)


def parse(text, source):
    try:
        data = json.loads(text)
    except ValueError:
        data = None
    if not isinstance(data, dict) or data.get("format") != FORMAT:
        raise RuntimeError("{}: not a script this host can read".format(source))
    return data


def load_nodes(data, group, keep_selection):
    """Makes the nodes of `data` in `group`, named uniquely there, wired among themselves."""
    created = []
    for item in data:
        node = G.new_node(item["class"], group, item.get("name"))
        _load_knobs(node, item.get("knobs", ()))
        if not keep_selection:
            node._knob_obj("selected")._value = False
        if isinstance(node, G.Group):
            load_nodes(item.get("nodes", ()), node, True)
        created.append(node)
    for node, item in zip(created, data):
        for i, ref in enumerate(item.get("inputs", ())):
            if ref is not None:
                node._set_input_raw(i, created[ref])
        if "viewer_active" in item:
            node._viewer_active = list(item["viewer_active"])
    return created


def _load_knobs(node, dumps):
    """Gives the node the knobs of `dumps`, in their order. The node's own knobs take the saved
    state; the others (user knobs) are made anew. The name is the caller's business."""
    own = {}
    for knob in node._knobs:
        own.setdefault(knob._name, knob)
    result, used = [], set()
    for data in dumps:
        knob = own.get(data.get("name"))
        if knob is not None and id(knob) not in used and knob.Class() == data.get("class"):
            used.add(id(knob))
            keep = knob._value
            knob._load(data)
            if knob._name == "name":
                knob._value = keep
        else:
            knob = K.knob_from_dump(data)
        result.append(knob)
    # Without these the node could not answer name(), xpos(), ... at all.
    for name in G._ESSENTIAL:
        knob = own.get(name)
        if knob is not None and id(knob) not in used and knob not in result:
            result.append(knob)
    for knob in node._knobs:
        knob._node = None
    node._knobs = []
    for knob in result:
        node._attach(knob)


# ---------------------------------------------------------------------------------------------
# Files and the clipboard
# ---------------------------------------------------------------------------------------------


def _write(path, text):
    try:
        with open(path, "w", encoding="utf-8") as f:
            f.write(text)
    except OSError as error:
        raise RuntimeError("{}: {}".format(path, error.strerror or error))


def _read(path):
    try:
        with open(path, encoding="utf-8") as f:
            return f.read()
    except OSError as error:
        raise RuntimeError("{}: {}".format(path, error.strerror or error))


def _selected(group):
    return [n for n in group._children if n.isSelected()]


def nodeCopy(s):
    """Writes the selected nodes of the current group to file `s` or the clipboard; False (and
    nothing written) when none is selected."""
    nodes = _selected(G.current_group())
    if not nodes:
        return False
    text = to_text(nodes)
    if s == CLIPBOARD:
        STATE.clipboard = text
    else:
        _write(s, text)
    return True


def _paste(data, connect):
    group = G.current_group()
    target = G._selected_output(group) if connect else None
    created = load_nodes(data.get("nodes", ()), group, keep_selection=False)
    if target is not None:
        for node, item in zip(created, data.get("nodes", ())):
            inputs = item.get("inputs") or [None]
            if inputs[0] is None and node.maxInputs() > 0:
                node.setInput(0, target)
                break
    for node in _selected(group):
        node.setSelected(False)
    for node in created:
        node.setSelected(True)
    return created


@recorded(lambda s: "Paste")
def nodePaste(s):
    """Pastes from file `s` or the clipboard into the current group and selects what it pasted.

    Returns the last node pasted at the top level (for a single node, that node); None when the
    clipboard is empty.
    """
    if s == CLIPBOARD:
        if STATE.clipboard is None:
            return None
        text = STATE.clipboard
    else:
        text = _read(s)
    created = _paste(parse(text, s), connect=True)
    return created[-1] if created else None


@recorded(lambda filename: "Import {}".format(os.path.basename(str(filename))))
def scriptReadFile(filename):
    """Reads the nodes of a file into the current group, without hooking them to the selection."""
    _paste(parse(_read(filename), filename), connect=False)


def _ask_save_path():
    if not STATE.interactive:
        return None
    from PySide2 import QtWidgets

    return QtWidgets.QFileDialog.getSaveFileName(None, "Save script", "", "Scripts (*.nk)")[0] or None


def _save(path):
    _write(path, to_text(STATE.root._children, STATE.root))


def scriptSave(filename=None):
    """Saves the script; a `filename` is written to without renaming the script."""
    path = filename or STATE.root._knob_value("name")
    if not path:
        path = _ask_save_path()
        if path is None:
            if STATE.interactive:
                return False
            raise RuntimeError("The script is untitled: give scriptSave a file name or use scriptSaveAs")
        STATE.root._rename(path, False)
    _save(path)
    return True


def scriptSaveAs(filename=None, overwrite=-1):
    """Saves the script under a new name, which becomes the script's name."""
    path = filename or _ask_save_path()
    if not path:
        raise RuntimeError("scriptSaveAs needs a file name")
    if overwrite == 0 and os.path.exists(path):
        raise RuntimeError("{} already exists".format(path))
    _save(path)
    STATE.root._rename(path, False)


def scriptName():
    path = STATE.root._knob_value("name")
    if not path:
        raise RuntimeError("No script name: the script is untitled")
    return path


def scriptClear():
    """Empties the script: nodes, selection, contexts, clipboard, the root's settings, the frame."""
    STATE.root._reset()
    STATE.context[:] = []
    STATE.clipboard = None
    STATE.active_viewer = None
    STATE.frame = 1
    forget()


def scriptOpen(filename):
    data = parse(_read(filename), filename)
    scriptClear()
    _load_knobs(STATE.root, data.get("root", ()))
    load_nodes(data.get("nodes", ()), STATE.root, keep_selection=True)
    STATE.root._rename(filename, False)


# ---------------------------------------------------------------------------------------------
# Groups
# ---------------------------------------------------------------------------------------------


@recorded(lambda show=True: "Group")
def makeGroup(show=True):
    """A new Group of the current context holding copies of its selected nodes, wired as they were.

    Every node outside the selection that fed a selected one feeds the group through an Input node
    of its own, and an Output node shows the copy that nothing else in the group takes as input.
    The selected nodes themselves stay, and stay selected; the group is not.
    """
    group = G.current_group()
    originals = _selected(group)
    new = G.new_node("Group", group)
    if originals:
        new.setXYpos(originals[0].xpos(), originals[0].ypos())
    else:
        new.setXYpos(*G._free_spot(group, new))
    copies = load_nodes(dump_nodes(originals), new, keep_selection=False)
    sources, feeds = [], []
    for original, copy in zip(originals, copies):
        for i, source in enumerate(original._inputs):
            if source is None or source in originals:
                continue
            if source not in sources:
                feed = G.new_node("Input", new)
                feed.setXYpos(copy.xpos(), copy.ypos() - 60)
                sources.append(source)
                feeds.append(feed)
                new._set_input_raw(new._input_nodes().index(feed), source)
            copy._set_input_raw(i, feeds[sources.index(source)])
    ends = [c for c in copies if c._info.output and not any(c in other._inputs for other in copies)]
    if ends:
        out = G.new_node("Output", new)
        out._set_input_raw(0, ends[-1])
        out.setXYpos(ends[-1].xpos(), ends[-1].ypos() + 60)
    return new
