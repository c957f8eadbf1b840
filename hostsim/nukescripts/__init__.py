"""The host's `nukescripts` helpers that the add-on uses, simulated.

Stands on `nuke` (which never imports it) and hands itself to the namespace commands run in.
"""

import sys

import nuke
from nuke import _script


def cut_paste_file():
    """The name nodeCopy and nodePaste take for the clipboard."""
    return "%clipboard%"


def clear_selection_recursive(group=nuke.root()):
    """Deselects every node of `group` and of every group inside it."""
    for node in group.nodes():
        node.setSelected(False)
        if isinstance(node, nuke.Group):
            clear_selection_recursive(node)


_script.provide("nukescripts", sys.modules[__name__])
