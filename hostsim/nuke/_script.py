"""Running Python the way the host runs a button's command or a menu entry.

The bottom layer, with `_state`, which it uses alone. The modules that commands see (`nuke`,
`nukescripts`) stand above everything here, so each hands itself in when it loads (`provide`).
"""

import builtins

from ._state import STATE

# The modules every command sees by name, as handed in by `provide`.
_MODULES = {}


def provide(name, module):
    """Makes `module` visible to every command as `name`, from now on and in a namespace made
    already."""
    _MODULES[name] = module
    if STATE.script_globals is not None:
        STATE.script_globals[name] = module


def namespace():
    """The one namespace all commands share, like the host's script editor: `nuke` and
    `nukescripts` are there, and what a command defines stays for the next one."""
    if STATE.script_globals is None:
        STATE.script_globals = {"__name__": "__main__", "__builtins__": builtins}
        STATE.script_globals.update(_MODULES)
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
