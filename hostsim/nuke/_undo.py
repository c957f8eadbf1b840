"""Undo and redo: each step keeps what it changed, object by object, from before and after it.

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


def _apply(journal, side):
    """Puts every object the step touched back as it was before (side 0) or after (side 1) it."""
    from . import _graph

    nodes_made = []
    knobs_made = []
    for obj, before, after in journal.after:
        copy = (before, after)[side]
        if copy is None:
            # The object did not exist on this side of the step.
            if isinstance(obj, _graph.Node):
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


def _close(journal):
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
    if not _close(journal) or STATE.undo_disabled:
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


def _describe(steps, n):
    n = int(n)
    if not 0 <= n < len(steps):
        raise IndexError("no step {} to describe".format(n))
    return steps[-1 - n].name


class _EitherForm:
    """A method of `Undo` that answers on an instance (`nuke.Undo().begin(name)`, as every version
    of the host's reference has it) and on the class itself (`nuke.Undo.begin(name)`, as only the
    newest has it). A host made to act as an older version (`hostctl.set_undo_instance_only`)
    refuses the class-level form, as those hosts do."""

    def __init__(self, function):
        self._function = function
        functools.update_wrapper(self, function)

    def __get__(self, instance, owner):
        if instance is None and STATE.undo_instance_only:
            name = self._function.__name__

            def refuse(*args, **kwargs):
                raise TypeError("descriptor '{}' of 'nuke.Undo' object needs an argument"
                                .format(name))
            return refuse
        return self._function


def _begin(name=None):
    STATE.undo_groups.append([None if name is None else str(name), _open()])


def _end():
    if not STATE.undo_groups:
        return
    name, journal = STATE.undo_groups.pop()
    if STATE.undo_groups:
        _close(journal)
        outer = STATE.undo_groups[0]
        if outer[0] is None:
            outer[0] = name
        return
    _record(name, journal)


def _undo():
    while STATE.undo_groups:
        _end()
    if STATE.undo_steps:
        step = STATE.undo_steps.pop()
        _apply(step.journal, 0)
        STATE.redo_steps.append(step)


def _redo():
    if STATE.redo_steps:
        step = STATE.redo_steps.pop()
        _apply(step.journal, 1)
        STATE.undo_steps.append(step)


def run_as_step(function, name):
    """Runs `function` as one undo step, as the host runs a menu or toolbar command; the step takes
    the name the command gives it, else `name`."""
    _begin()
    depth = len(STATE.undo_groups)
    try:
        return function()
    finally:
        if len(STATE.undo_groups) >= depth and STATE.undo_groups[0][0] is None:
            STATE.undo_groups[0][0] = name
        while len(STATE.undo_groups) >= depth:
            _end()


class Undo:
    """The host's undo list. `with nuke.Undo():` groups what the block does into one step, even
    when it fails. Each method answers on an instance and on the class (see `_EitherForm`)."""

    def __init__(self, name=None):
        self._name = name

    def __enter__(self):
        _begin(self._name)
        return self

    def __exit__(self, exc_type, exc, tb):
        _end()
        return False

    @_EitherForm
    def begin(name=None):
        """Opens a group; groups nest, and only the outermost one makes a step when it ends."""
        _begin(name)

    @_EitherForm
    def end():
        _end()

    @_EitherForm
    def cancel():
        """Takes back what the innermost open group did and closes it without a step."""
        if STATE.undo_groups:
            _, journal = STATE.undo_groups.pop()
            _close(journal)
            _apply(journal, 0)

    @_EitherForm
    def new():
        _end()
        _begin()

    @_EitherForm
    def name(name):
        """Names the step the open groups will make."""
        if STATE.undo_groups:
            STATE.undo_groups[0][0] = str(name)

    @_EitherForm
    def disable():
        STATE.undo_disabled += 1

    @_EitherForm
    def enable():
        STATE.undo_disabled = max(0, STATE.undo_disabled - 1)

    @_EitherForm
    def disabled():
        return STATE.undo_disabled > 0

    @_EitherForm
    def undo():
        """Takes back the latest step; groups still open are closed first, as steps of their own."""
        _undo()

    @_EitherForm
    def redo():
        _redo()

    @_EitherForm
    def undoSize():
        return len(STATE.undo_steps)

    @_EitherForm
    def redoSize():
        return len(STATE.redo_steps)

    @_EitherForm
    def undoDescribe(n=0):
        """The name of the step `n` back from the latest (0)."""
        return _describe(STATE.undo_steps, n)

    @_EitherForm
    def redoDescribe(n=0):
        return _describe(STATE.redo_steps, n)

    undoDescribeFully = undoDescribe
    redoDescribeFully = redoDescribe

    @_EitherForm
    def undoTruncate(n=0):
        """Forgets the steps `n` and further back."""
        n = max(0, int(n))
        del STATE.undo_steps[:max(0, len(STATE.undo_steps) - n)]

    @_EitherForm
    def redoTruncate(n=0):
        n = max(0, int(n))
        del STATE.redo_steps[:max(0, len(STATE.redo_steps) - n)]


def undo():
    _undo()


def redo():
    _redo()
