"""The one mutable state of the simulated host.

Everything that outlives a single call lives here, in one object, so that `hostctl.reset()` can put the
host back to a known state without reloading modules, and so that the graph, the dialogs and the test
control all see the same thing.

The bottom layer: it uses no other file of this package.
"""


class _State:
    def __init__(self):
        self.root = None  # set once by _graph when the module loads
        # Group contexts entered with begin()/`with group:`; the innermost is last. Empty means root.
        self.context = []
        # (node, knob) of the knob commands that run now; the innermost is last.
        self.this = []
        # The node under the pointer when the last key press was a hotkey, for selectedNode().
        self.node_under_pointer = None
        # A host of a version whose Undo methods answer only on an instance.
        self.undo_instance_only = False
        self.copy_writes_nothing = False  # nodeCopy to a file answers True and writes nothing
        self.frame = 1
        self.serial = 0  # creation counter: tells which Viewer was made last
        self.active_viewer = None  # a Viewer node chosen through hostctl, or None
        self.interactive = False
        self.messages = []
        self.panel_answers = []  # [(result, values)], popped by Panel.show()
        self.answers = []  # values popped by ask() and getInput()
        self.panels_shown = []
        self.menus = {}
        self.plugin_path = []
        # Undo: the steps that can be undone and redone (latest last), the open groups as
        # [name, state before], how deep recorded calls nest now, and the disable() count.
        self.undo_steps = []
        self.redo_steps = []
        self.undo_groups = []
        self.undo_calls = 0
        self.undo_disabled = 0
        self.script_globals = None  # the namespace knob commands run in, made on first use

    def next_serial(self):
        self.serial += 1
        return self.serial


STATE = _State()
