"""The host's undo list: `Undo` (groups, names, undo and redo, the history's size) and the
`undo()`/`redo()` functions, on the steps that `_journal` records.

Layer: script text and undo, above the graph. Uses `_state` and `_journal` only.
"""

import functools

from ._journal import apply, close, end_group, open_group, redo_step, undo_step
from ._state import STATE


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


def run_as_step(function, name):
    """Runs `function` as one undo step, as the host runs a menu or toolbar command; the step takes
    the name the command gives it, else `name`."""
    open_group()
    depth = len(STATE.undo_groups)
    try:
        return function()
    finally:
        if len(STATE.undo_groups) >= depth and STATE.undo_groups[0][0] is None:
            STATE.undo_groups[0][0] = name
        while len(STATE.undo_groups) >= depth:
            end_group()


class Undo:
    """The host's undo list. `with nuke.Undo():` groups what the block does into one step, even
    when it fails. Each method answers on an instance and on the class (see `_EitherForm`)."""

    def __init__(self, name=None):
        self._name = name

    def __enter__(self):
        open_group(self._name)
        return self

    def __exit__(self, exc_type, exc, tb):
        end_group()
        return False

    @_EitherForm
    def begin(name=None):
        """Opens a group; groups nest, and only the outermost one makes a step when it ends."""
        open_group(name)

    @_EitherForm
    def end():
        end_group()

    @_EitherForm
    def cancel():
        """Takes back what the innermost open group did and closes it without a step."""
        if STATE.undo_groups:
            _, journal = STATE.undo_groups.pop()
            close(journal)
            apply(journal, 0)

    @_EitherForm
    def new():
        end_group()
        open_group()

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
        undo_step()

    @_EitherForm
    def redo():
        redo_step()

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
    undo_step()


def redo():
    redo_step()
