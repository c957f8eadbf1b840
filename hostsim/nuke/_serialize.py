"""Copy, paste, save and open: the graph as the host's script text (see `_nk`).

A copy writes the selected nodes of the current group with their connections among themselves; the
first input that came from outside (or the input of a chain's first node that had none) takes what the
paste lands on, as the host does: a paste hooks onto the selected node.

Layer: script text, on `_nk`, the graph and the bottom layer (`_state`, `_host`, `_journal`).
"""

import os

from . import _graph as G
from . import _nk
from ._host import QtWidgets, clipboard_text, set_clipboard_text
from ._journal import forget, recorded
from ._state import STATE

CLIPBOARD = "%clipboard%"


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
        # Editors on some platforms put a byte-order mark before the first command.
        with open(path, encoding="utf-8-sig") as f:
            return f.read()
    except OSError as error:
        raise RuntimeError("{}: {}".format(path, error.strerror or error))
    except UnicodeDecodeError:
        raise RuntimeError("{}: not a script this host can read (not text)".format(path))


def _selected(group):
    return [n for n in group._children if n.isSelected()]


def nodeCopy(s):
    """Writes the selected nodes of the current group to file `s` or the clipboard; False (and
    nothing written) when none is selected."""
    nodes = _selected(G.current_group())
    if not nodes:
        return False
    text = _nk.write_copy(nodes)
    if s == CLIPBOARD:
        set_clipboard_text(text)
    elif not STATE.copy_writes_nothing:
        _write(s, text)
    return True


def _paste(text, source, connect):
    parsed = _nk.parse(text, source)
    group = G.current_group()
    target = G._selected_output(group) if connect else None
    created = _nk.load(parsed, group, target)
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
        text = clipboard_text()
        if text is None:
            return None
    else:
        text = _read(s)
    created = _paste(text, s, connect=True)
    return created[-1] if created else None


@recorded(lambda filename: "Import {}".format(os.path.basename(str(filename))))
def scriptReadFile(filename):
    """Reads the nodes of a file into the current group, without hooking them to the selection."""
    _paste(_read(filename), filename, connect=False)


def _ask_save_path():
    if not STATE.interactive:
        return None
    return QtWidgets.QFileDialog.getSaveFileName(None, "Save script", "", "Scripts (*.nk)")[0] or None


def _save(path, name):
    _write(path, _nk.write_script(STATE.root, name))


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
    _save(path, STATE.root._knob_value("name"))
    return True


def scriptSaveAs(filename=None, overwrite=-1):
    """Saves the script under a new name, which becomes the script's name."""
    path = filename or _ask_save_path()
    if not path:
        raise RuntimeError("scriptSaveAs needs a file name")
    if overwrite == 0 and os.path.exists(path):
        raise RuntimeError("{} already exists".format(path))
    _save(path, path)
    STATE.root._rename(path, False)


def scriptName():
    path = STATE.root._knob_value("name")
    if not path:
        raise RuntimeError("No script name: the script is untitled")
    return path


def scriptClear():
    """Empties the script: nodes, selection, contexts, the root's settings, the frame."""
    STATE.root._reset()
    STATE.root._commands = ()
    STATE.context[:] = []
    STATE.active_viewer = None
    STATE.frame = 1
    forget()


def scriptOpen(filename):
    """Opens a script in place of the current one; a file that is no script leaves it as it was."""
    parsed = _nk.parse(_read(filename), filename)
    scriptClear()
    _nk.load_root(parsed, STATE.root)
    _nk.load(parsed, STATE.root, keep_selection=True)
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
    # Names are unique in a group, and the new group starts empty: each copy keeps its name.
    _nk.load(_nk.parse(_nk.write_nodes(originals), "makeGroup"), new)
    copies = [new.node(original.name()) for original in originals]
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
