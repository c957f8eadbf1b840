"""Test control of the simulated host: a fresh script, recorded messages, answers for dialogs.

    hostctl.reset()                         empty script, nothing recorded, nothing queued, not interactive
    hostctl.messages                        texts given to nuke.message, oldest first
    hostctl.queue_panel(1, {"name": "2"})   the next nuke.Panel.show() returns 1 with that choice
    hostctl.panels_shown                    what each panel offered and what it answered
    hostctl.queue_answer(True)              the next nuke.ask() / nuke.getInput() answer
    hostctl.set_interactive(True)           dialogs without a queued answer become real Qt dialogs
    hostctl.clipboard()                     the text on the operating system's clipboard, or None
    hostctl.set_clipboard(text)             puts text there (None empties it), as another program does
    hostctl.set_node_under_pointer(node)    the node under the pointer at the last hotkey (None: none)
    hostctl.set_undo_instance_only(True)    nuke.Undo answers only on an instance, as older hosts do
    hostctl.set_active_viewer(node)         make this Viewer the active one (None: the newest again)
    hostctl.set_copy_writes_nothing(True)   nodeCopy to a file still answers True but writes no file
    hostctl.script_text()                   the whole script as scriptSave would write it, to compare

`messages` and `panels_shown` are lists that stay the same objects across resets, so a reference
taken once keeps working.
"""

import nuke
import nukescripts  # noqa: F401  (the host loads it at start-up: commands see it by name)
from nuke import _host, _nk
from nuke._serialize import scriptClear
from nuke._state import STATE
from nuke._ui import UnexpectedDialog

__all__ = ["UnexpectedDialog", "clipboard", "is_interactive", "messages", "panels_shown",
           "pending_answers", "queue_answer", "queue_panel", "reset", "script_text",
           "set_active_viewer", "set_clipboard", "set_copy_writes_nothing", "set_interactive",
           "set_node_under_pointer", "set_undo_instance_only"]

messages = STATE.messages
panels_shown = STATE.panels_shown


def reset():
    """Back to an empty, untitled script, as a freshly started host in test mode."""
    scriptClear()
    STATE.this[:] = []
    del messages[:]
    del panels_shown[:]
    del STATE.panel_answers[:]
    del STATE.answers[:]
    STATE.interactive = False
    STATE.copy_writes_nothing = False
    STATE.undo_disabled = 0
    STATE.node_under_pointer = None
    STATE.undo_instance_only = False
    set_clipboard(None)


def queue_panel(result=1, values=None):
    """Queues the answer of the next nuke.Panel: what show() returns (1 OK, 0 Cancel) and the
    values the user chose, by control name. A value a pulldown does not offer fails the show()."""
    STATE.panel_answers.append((result, dict(values or {})))


def queue_answer(value):
    """Queues the answer of the next nuke.ask (a truth value) or nuke.getInput (a text, or None for
    cancel)."""
    STATE.answers.append(value)


def pending_answers():
    """How many queued answers no dialog has taken yet."""
    return len(STATE.panel_answers) + len(STATE.answers)


def set_interactive(flag=True):
    STATE.interactive = bool(flag)


def is_interactive():
    return STATE.interactive


def clipboard():
    return _host.clipboard_text()


def set_clipboard(text):
    _host.set_clipboard_text(text)


def set_node_under_pointer(node):
    STATE.node_under_pointer = node


def set_undo_instance_only(flag=True):
    STATE.undo_instance_only = bool(flag)


def script_text():
    """The whole script (root, nodes, names, positions, knobs, selection, connections) as the text
    scriptSave writes, without writing a file."""
    return _nk.write_script(STATE.root, STATE.root._knob_value("name"))


def set_copy_writes_nothing(flag=True):
    """Makes nodeCopy to a file answer True without writing it, as a host whose write went wrong
    without a word (a full disk, a share that went away)."""
    STATE.copy_writes_nothing = bool(flag)


def set_active_viewer(node):
    if node is not None and (not isinstance(node, nuke.Node) or node.Class() != "Viewer"):
        raise ValueError("set_active_viewer takes a Viewer node or None")
    STATE.active_viewer = node
