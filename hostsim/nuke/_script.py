"""Running Python the way the host runs a button's command or a menu entry."""

import builtins
import sys

from ._state import STATE


def namespace():
    """The one namespace all commands share, like the host's script editor: `nuke` and
    `nukescripts` are imported there, and what a command defines stays for the next one."""
    if STATE.script_globals is None:
        import nukescripts

        STATE.script_globals = {"__name__": "__main__", "__builtins__": builtins,
                                "nuke": sys.modules["nuke"], "nukescripts": nukescripts}
    return STATE.script_globals


def run(command, where="<command>"):
    exec(compile(command, where, "exec"), namespace())


def run_knob_command(knob):
    """Runs a button's command with thisNode()/thisKnob() bound to it and its node's group as the
    context, for the length of the command; both come back however the command ends."""
    node = knob._node
    depth = len(STATE.context)
    STATE.this.append((node, knob))
    if node is not None and node._parent is not None:
        STATE.context.append(node._parent)
    try:
        run(knob._value or "", "<knob {}>".format(knob._name))
    finally:
        STATE.this.pop()
        del STATE.context[depth:]
