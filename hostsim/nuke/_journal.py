"""Recording undo steps: each step keeps what it changed, object by object, from before and after it.

Nodes and knobs tell the open steps before they change: assigning one of their fields, or changing a
list they hold in place (a node's inputs, children and knobs, an array knob's values), first hands
the object to `touch`, which keeps a copy of its fields the first time the step sees it. When the
step ends, each object it saw is copied again as it is now. Undoing a step puts the copies from
before back into those very objects, redoing puts the copies from after; so a handle taken before a
delete works again once the delete is undone, and a node made by a step dies again when it is
undone. What a step costs depends on what it changed, not on the size of the script.

What makes a step: a public call that changes the script (creating, deleting, pasting, wiring, renaming,
moving, a knob's value, label, tooltip or flags) when no other such call and no `Undo` group is
running; or everything between the outermost `Undo.begin()` and its `end()`. Selecting nodes makes no
step of its own (as clicking around in the host's graph fills no undo list), but a step puts back
the selection of the nodes it selected or deselected. Opening or clearing a script forgets the
history. Changes made while undo is disabled are not recorded.

This is the bottom layer, with `_state` (which it uses alone): knobs and nodes record their changes
through it, and `_undo` above them gives the host's `Undo` on top of it.
"""

import functools

from ._state import STATE

# The steps being recorded now, outermost first: each recorded call that is not inside another, and
# each open `Undo` group.
_OPEN = []


class _Journal:
    """What one step changed: each touched object with a copy of its fields from before (None for an
    object the step made), then from after."""

    __slots__ = ("objects", "viewer", "after", "after_viewer")

    def __init__(self):
        self.objects = {}
        self.viewer = STATE.active_viewer
        self.after = None
        self.after_viewer = None


# ---------------------------------------------------------------------------------------------
# Recording changes
# ---------------------------------------------------------------------------------------------


class TrackedList(list):
    """A list held by a node or knob; it tells the open steps about its owner before it changes."""

    __slots__ = ("owner",)


def _telling(name):
    change = getattr(list, name)

    def changed(self, *args, **kwargs):
        if _OPEN and not STATE.undo_disabled:
            touch(self.owner)
        return change(self, *args, **kwargs)

    changed.__name__ = name
    return changed


for _name in ("append", "extend", "insert", "remove", "pop", "clear", "sort", "reverse",
              "__setitem__", "__delitem__", "__iadd__", "__imul__"):
    setattr(TrackedList, _name, _telling(_name))


def tracked(owner, value):
    if value.__class__ is list:
        value = TrackedList(value)
        value.owner = owner
    return value


def setattr_hook(self, name, value):
    """`__setattr__` of nodes and knobs: the open steps see the object before it changes."""
    if _OPEN and not STATE.undo_disabled:
        touch(self)
    object.__setattr__(self, name, tracked(self, value) if value.__class__ is list else value)


class _Saved(tuple):
    """A list field as a step keeps it."""

    __slots__ = ()


def _fields(obj):
    return object.__getattribute__(obj, "__dict__")


def _copy(obj):
    """The object's fields, lists as tuples; None while the object is still being made."""
    fields = _fields(obj)
    if obj._undo_complete not in fields:
        return None
    return {key: _Saved(value) if value.__class__ is TrackedList else value
            for key, value in fields.items()}


def touch(obj):
    """Keeps `obj` as it is now in every open step that has not seen it yet."""
    key = id(obj)
    copy = _MISSING
    for journal in _OPEN:
        if key not in journal.objects:
            if copy is _MISSING:
                copy = _copy(obj)
            journal.objects[key] = (obj, copy)


_MISSING = object()


def _put_back(obj, copy):
    fields = _fields(obj)
    for key in [key for key in fields if key not in copy]:
        del fields[key]
    for key, value in copy.items():
        fields[key] = tracked(obj, list(value)) if value.__class__ is _Saved else value


def apply(journal, side):
    """Puts every object the step touched back as it was before (side 0) or after (side 1) it."""
    nodes_made = []
    knobs_made = []
    for obj, before, after in journal.after:
        copy = (before, after)[side]
        if copy is None:
            # The object did not exist on this side of the step.
            if obj._undo_is_node:
                nodes_made.append(obj)
            else:
                knobs_made.append(obj)
        else:
            _put_back(obj, copy)
    for node in nodes_made:
        _fields(node)["_alive"] = False
    for knob in knobs_made:
        node = _fields(knob).get("_node")
        if node is not None and _fields(node).get("_alive") and knob not in _fields(node)["_knobs"]:
            _fields(knob)["_node"] = None
    STATE.active_viewer = (journal.viewer, journal.after_viewer)[side]


class _Step:
    __slots__ = ("name", "journal")

    def __init__(self, name, journal):
        self.name, self.journal = name, journal


def _open():
    journal = _Journal()
    _OPEN.append(journal)
    return journal


def close(journal):
    """Ends the journal; True when it changed anything."""
    _OPEN.remove(journal)
    changes = []
    changed = journal.viewer is not STATE.active_viewer
    for obj, before in journal.objects.values():
        after = _copy(obj)
        changes.append((obj, before, after))
        if before != after:
            changed = True
    journal.after = changes
    journal.after_viewer = STATE.active_viewer
    return changed


def _record(name, journal):
    """Adds a step of what `journal` saw, unless recording is off or nothing changed."""
    if not close(journal) or STATE.undo_disabled:
        return
    STATE.undo_steps.append(_Step(name or "", journal))
    del STATE.redo_steps[:]


def forget():
    """Drops the history and any open group, as a new or opened script starts without one."""
    del STATE.undo_steps[:]
    del STATE.redo_steps[:]
    del STATE.undo_groups[:]
    del _OPEN[:]
    STATE.undo_calls = 0


def recorded(describe, when=None):
    """Makes each call of the decorated function one undo step, unless it runs inside another
    recorded call or an open group. `describe(*args)` names the step, from the arguments as they are
    before the call; `when(*args)` false means the call cannot change the script and records nothing."""

    def wrap(function):
        @functools.wraps(function)
        def call(*args, **kwargs):
            if (STATE.undo_calls or STATE.undo_groups or STATE.undo_disabled
                    or (when is not None and not when(*args))):
                return function(*args, **kwargs)
            try:
                name = describe(*args, **kwargs)
            except Exception:
                # Bad arguments: the call itself says what is wrong with them.
                name = ""
            journal = _open()
            STATE.undo_calls += 1
            try:
                return function(*args, **kwargs)
            finally:
                STATE.undo_calls -= 1
                # A call that failed half-way is still undoable as one step.
                _record(name, journal)

        return call

    return wrap


def open_group(name=None):
    STATE.undo_groups.append([None if name is None else str(name), _open()])


def end_group():
    if not STATE.undo_groups:
        return
    name, journal = STATE.undo_groups.pop()
    if STATE.undo_groups:
        close(journal)
        outer = STATE.undo_groups[0]
        if outer[0] is None:
            outer[0] = name
        return
    _record(name, journal)


def undo_step():
    while STATE.undo_groups:
        end_group()
    if STATE.undo_steps:
        step = STATE.undo_steps.pop()
        apply(step.journal, 0)
        STATE.redo_steps.append(step)


def redo_step():
    if STATE.redo_steps:
        step = STATE.redo_steps.pop()
        apply(step.journal, 1)
        STATE.undo_steps.append(step)
