"""Undo and redo: each step keeps the whole script's state from before and after it.

A state is every node's group, children, inputs, knob objects and knob values, held by reference to the
node and knob objects themselves. Restoring one brings those very objects back, so a handle taken before
a delete works again once the delete is undone, and a node made by a step dies again when it is undone.

What makes a step: a public call that changes the script (creating, deleting, pasting, wiring, renaming,
moving, a knob's value, label, tooltip or flags) when no other such call and no `Undo` group is
running; or everything between the outermost `Undo.begin()` and its `end()`. Selecting nodes makes no
step of its own (as clicking around in the host's graph fills no undo list), but every step restores
the selection it found. Opening or clearing a script forgets the history.

A state is taken whole, so changes made while undo is disabled are not told apart from the changes of
the step around them: undoing the next step also takes them back.
"""

import functools

from ._state import STATE


# ---------------------------------------------------------------------------------------------
# States of the whole script
# ---------------------------------------------------------------------------------------------


def _vars(obj):
    # Nodes and knobs check their handle on every attribute; a state is taken on every step, so it
    # reads their fields directly.
    return object.__getattribute__(obj, "__dict__")


def _walk():
    pending = [STATE.root]
    while pending:
        node = pending.pop()
        yield node
        pending.extend(_vars(node).get("_children", ()))


def _knob_state(knob):
    fields = _vars(knob)
    value = fields["_value"]
    is_list = value.__class__ is list
    items = fields.get("_items")
    return (fields["_label"], fields["_tooltip"], fields["_flags"],
            tuple(value) if is_list else value, is_list, None if items is None else tuple(items),
            fields["_raw"])


def capture():
    """The state of the whole script; two states compare equal when nothing changed between them."""
    nodes = []
    for node in _walk():
        fields = _vars(node)
        children = fields.get("_children")
        knobs = fields["_knobs"]
        nodes.append((node, (
            fields["_parent"],
            None if children is None else tuple(children),
            tuple(fields["_inputs"]),
            tuple(knobs),
            tuple(map(_knob_state, knobs)),
            tuple(fields["_viewer_active"]),
            fields["_selected_at"],
            fields["_extra"],
        )))
    return tuple(nodes), STATE.active_viewer


def _restore_knob(knob, state):
    fields = _vars(knob)
    label, tooltip, flags, value, is_list, items, raw = state
    fields.update(_label=label, _tooltip=tooltip, _flags=flags,
                  _value=list(value) if is_list else value, _raw=raw)
    if items is not None:
        fields["_items"] = list(items)


def restore(state):
    from . import _graph

    nodes, active_viewer = state
    kept = {id(node) for node, _ in nodes}
    for node in list(_walk()):
        if id(node) not in kept:
            _graph._kill(node)
    for node, (parent, children, inputs, knobs, saved, viewer, selected_at, extra) in nodes:
        node._alive = True
        node._parent = parent
        if children is not None:
            node._children = list(children)
        node._inputs = list(inputs)
        for knob in node._knobs:
            knob._node = None
        node._knobs = list(knobs)
        for knob, values in zip(knobs, saved):
            knob._node = node
            _restore_knob(knob, values)
        node._viewer_active = list(viewer)
        node._selected_at = selected_at
        node._extra = extra
    STATE.active_viewer = active_viewer


# ---------------------------------------------------------------------------------------------
# The history
# ---------------------------------------------------------------------------------------------


class _Step:
    def __init__(self, name, before, after):
        self.name, self.before, self.after = name, before, after


def _record(name, before):
    """Adds a step from `before` to now, unless recording is off or nothing changed."""
    if STATE.undo_disabled:
        return
    after = capture()
    if after == before:
        return
    STATE.undo_steps.append(_Step(name or "", before, after))
    del STATE.redo_steps[:]


def forget():
    """Drops the history and any open group, as a new or opened script starts without one."""
    del STATE.undo_steps[:]
    del STATE.redo_steps[:]
    del STATE.undo_groups[:]
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
            before = capture()
            STATE.undo_calls += 1
            try:
                return function(*args, **kwargs)
            finally:
                STATE.undo_calls -= 1
                # A call that failed half-way is still undoable as one step.
                _record(name, before)

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
    STATE.undo_groups.append([None if name is None else str(name), capture()])


def _end():
    if not STATE.undo_groups:
        return
    name, before = STATE.undo_groups.pop()
    if STATE.undo_groups:
        outer = STATE.undo_groups[0]
        if outer[0] is None:
            outer[0] = name
        return
    _record(name, before)


def _undo():
    while STATE.undo_groups:
        _end()
    if STATE.undo_steps:
        step = STATE.undo_steps.pop()
        restore(step.before)
        STATE.redo_steps.append(step)


def _redo():
    if STATE.redo_steps:
        step = STATE.redo_steps.pop()
        restore(step.after)
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
            _, before = STATE.undo_groups.pop()
            restore(before)

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
