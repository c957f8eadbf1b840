"""What the host shows the user: messages, questions, panels and menus; and the plug-in path.

Dialogs answer in one of two ways. In tests (the default) they take their answer from queues that
`hostctl` fills, and record what they offered; a dialog with no queued answer raises UnexpectedDialog,
so a test notices a dialog it did not expect. In the demo host (`hostctl.set_interactive(True)`) a dialog
with no queued answer is a real modal Qt dialog.

Layer: UI, on `_undo` and the bottom layer (`_state`, `_host`, `_script`).
"""

import os
import sys

from . import _script
from ._host import QtWidgets, exec_dialog
from ._state import STATE
from ._undo import run_as_step


class UnexpectedDialog(AssertionError):
    """A dialog opened while the test had queued no answer for it, or an answer that does not fit."""


def _pop_answer(kind, prompt):
    if STATE.answers:
        return True, STATE.answers.pop(0)
    if STATE.interactive:
        return False, None
    raise UnexpectedDialog("nuke.{}({!r}) asked the user, but no answer is queued "
                           "(hostctl.queue_answer)".format(kind, prompt))


def message(prompt):
    """Shows a message. Every text is recorded in hostctl.messages."""
    STATE.messages.append(str(prompt))
    if STATE.interactive:
        QtWidgets.QMessageBox.information(None, "Message", str(prompt))


def ask(prompt):
    queued, answer = _pop_answer("ask", prompt)
    if queued:
        return bool(answer)
    buttons = QtWidgets.QMessageBox.Yes | QtWidgets.QMessageBox.No
    return QtWidgets.QMessageBox.question(None, "Question", str(prompt), buttons) \
        == QtWidgets.QMessageBox.Yes


def getInput(prompt, default=""):
    """The text the user typed, or None when they cancelled."""
    queued, answer = _pop_answer("getInput", prompt)
    if queued:
        return None if answer is None else str(answer)
    text, ok = QtWidgets.QInputDialog.getText(None, "Input", str(prompt), text=str(default))
    return text if ok else None


class Panel:
    """A small modal form: pulldowns, text fields, check boxes, and OK/Cancel or buttons of its own.

    `show()` gives 1 for OK and 0 for Cancel; with buttons of its own, the index of the button
    pressed, in the order they were added.
    """

    def __init__(self, title="", width=None):
        self._title = str(title)
        self._width = width
        self._controls = []  # [kind, name, value, items]
        self._buttons = []

    def title(self):
        return self._title

    def setTitle(self, title):
        self._title = str(title)
        return True

    def width(self):
        return self._width

    def setWidth(self, width):
        self._width = width
        return True

    def _add(self, kind, name, value, items=None):
        self._controls.append([kind, str(name), value, items])
        return True

    def addEnumerationPulldown(self, name, value):
        """`value` holds the items, separated by blanks; the first is chosen."""
        items = str(value or "").split()
        return self._add("pulldown", name, items[0] if items else "", items)

    def addSingleLineInput(self, name, value=""):
        return self._add("input", name, "" if value is None else str(value))

    def addBooleanCheckBox(self, name, value=False):
        return self._add("checkbox", name, bool(value))

    def addButton(self, name, value=None):
        self._buttons.append(str(name))
        return True

    def _control(self, name):
        for control in self._controls:
            if control[1] == name:
                return control
        return None

    def value(self, name):
        """The chosen item, the text or the check state; None for a name the panel doesn't have."""
        control = self._control(name)
        return None if control is None else control[2]

    def show(self):
        record = {
            "title": self._title,
            "pulldowns": {c[1]: list(c[3]) for c in self._controls if c[0] == "pulldown"},
            "defaults": {c[1]: c[2] for c in self._controls},
            "buttons": list(self._buttons),
        }
        STATE.panels_shown.append(record)
        if STATE.panel_answers:
            result, values = STATE.panel_answers.pop(0)
            self._take(values or {})
        elif STATE.interactive:
            result = self._exec()
        else:
            raise UnexpectedDialog("nuke.Panel({!r}).show() with no queued answer "
                                   "(hostctl.queue_panel)".format(self._title))
        record["result"] = result
        record["values"] = {c[1]: c[2] for c in self._controls}
        return result

    def _take(self, values):
        for name, value in values.items():
            control = self._control(name)
            if control is None:
                raise UnexpectedDialog("panel {!r} has no control {!r}; it has {}".format(
                    self._title, name, [c[1] for c in self._controls]))
            if control[0] == "pulldown" and value not in control[3]:
                raise UnexpectedDialog("panel {!r}: {!r} is not an item of {!r}: {}".format(
                    self._title, value, name, control[3]))
            control[2] = value

    def _exec(self):
        dialog = QtWidgets.QDialog()
        dialog.setWindowTitle(self._title)
        if self._width:
            dialog.resize(int(self._width), dialog.sizeHint().height())
        form = QtWidgets.QFormLayout(dialog)
        readers = []
        for control in self._controls:
            kind, name, value, items = control
            if kind == "pulldown":
                widget = QtWidgets.QComboBox()
                widget.addItems(items)
                readers.append((control, widget.currentText))
            elif kind == "input":
                widget = QtWidgets.QLineEdit(value)
                readers.append((control, widget.text))
            else:
                widget = QtWidgets.QCheckBox()
                widget.setChecked(value)
                readers.append((control, widget.isChecked))
            widget.setObjectName(name)
            form.addRow(name, widget)
        box = QtWidgets.QDialogButtonBox()
        if self._buttons:
            for index, label in enumerate(self._buttons):
                button = box.addButton(label, QtWidgets.QDialogButtonBox.ActionRole)
                button.clicked.connect(lambda checked=False, i=index: dialog.done(i))
        else:
            box.setStandardButtons(QtWidgets.QDialogButtonBox.Ok | QtWidgets.QDialogButtonBox.Cancel)
            box.accepted.connect(dialog.accept)
            box.rejected.connect(dialog.reject)
        form.addRow(box)
        result = exec_dialog(dialog)
        for control, read in readers:
            control[2] = read()
        return result


# ---------------------------------------------------------------------------------------------
# Menus
# ---------------------------------------------------------------------------------------------


class MenuItem:
    """A command of a menu: a Python text run like a button's command, or a callable."""

    def __init__(self, name, command=None, shortcut="", icon="", tooltip=""):
        self._name, self._command = name, command
        self._shortcut, self._icon, self._tooltip = shortcut or "", icon or "", tooltip or ""
        self._enabled = True

    def name(self):
        return self._name

    def script(self):
        return self._command if isinstance(self._command, str) else ""

    def shortcut(self):
        return self._shortcut

    def setShortcut(self, shortcut):
        self._shortcut = shortcut or ""

    def icon(self):
        return self._icon

    def tooltip(self):
        return self._tooltip

    def setEnabled(self, enabled):
        self._enabled = bool(enabled)

    def enabled(self):
        return self._enabled

    def invoke(self):
        """Runs the command as choosing the entry does: as one undo step of its own."""
        if callable(self._command):
            return run_as_step(self._command, self._name)
        if self._command:
            run_as_step(lambda: _script.run(self._command, "<menu {}>".format(self._name)),
                              self._name)
        return None


class _Separator(MenuItem):
    def __init__(self):
        super().__init__("")


class Menu(MenuItem):
    """A menu of commands and submenus; names with "/" reach into submenus, making them as needed."""

    def __init__(self, name, icon="", tooltip=""):
        super().__init__(name, icon=icon, tooltip=tooltip)
        self._items = []

    def items(self):
        return list(self._items)

    def _insert(self, item, index):
        if index is None or index < 0 or index >= len(self._items):
            self._items.append(item)
        else:
            self._items.insert(index, item)

    def _own(self, name):
        return next((i for i in self._items if i._name == name and not isinstance(i, _Separator)),
                    None)

    def _walk(self, path, make):
        """The menu that holds the last part of `path`, and that part."""
        parts = path.split("/")
        menu = self
        for part in parts[:-1]:
            sub = menu._own(part)
            if not isinstance(sub, Menu):
                if not make:
                    return None, parts[-1]
                sub = Menu(part)
                menu._insert(sub, -1)
            menu = sub
        return menu, parts[-1]

    def addCommand(self, name, command=None, shortcut="", icon="", tooltip="", index=-1,
                   readonly=False, shortcutContext=None, tag=None, tagTarget=None, node=None):
        """Adds (or replaces) a command; returns its MenuItem. Choosing it runs the command as one
        undo step."""
        menu, leaf = self._walk(name, True)
        item = MenuItem(leaf, command, shortcut, icon, tooltip)
        old = menu._own(leaf)
        if old is not None and not isinstance(old, Menu):
            menu._items[menu._items.index(old)] = item
        else:
            menu._insert(item, index)
        return item

    def addMenu(self, name, *, icon="", tooltip="", index=-1, tag=None):
        """The submenu of that name, made if it is new. Everything after the name is taken by
        keyword only, as the host's reference has it."""
        menu, leaf = self._walk(name, True)
        old = menu._own(leaf)
        if isinstance(old, Menu):
            return old
        sub = Menu(leaf, icon, tooltip)
        menu._insert(sub, index)
        return sub

    def addSeparator(self, *, index=-1, tag=None):
        item = _Separator()
        self._insert(item, index)
        return item

    def findItem(self, name):
        menu, leaf = self._walk(name, False)
        return None if menu is None else menu._own(leaf)

    def removeItem(self, name):
        menu, leaf = self._walk(name, False)
        item = None if menu is None else menu._own(leaf)
        if item is not None:
            menu._items.remove(item)

    def clearMenu(self):
        self._items = []

    def invoke(self):
        return None


MENU_NAMES = ("Nuke", "Nodes", "Viewer", "Node Graph", "Properties", "Pane", "Animation")


def menu(name):
    """One of the host's menus, or None for a name it doesn't have. Menus outlive scriptClear."""
    if name not in MENU_NAMES:
        return None
    if name not in STATE.menus:
        STATE.menus[name] = Menu(name)
    return STATE.menus[name]


def toolbar(name, create=True):
    return menu(name)


# ---------------------------------------------------------------------------------------------
# Plug-in paths
# ---------------------------------------------------------------------------------------------


def pluginAddPath(path, addToSysPath=True):
    """Puts `path` first on the plug-in path (and on sys.path, where Python finds packages)."""
    path = os.path.expanduser(path)
    if path in STATE.plugin_path:
        STATE.plugin_path.remove(path)
    STATE.plugin_path.insert(0, path)
    if addToSysPath:
        if path in sys.path:
            sys.path.remove(path)
        sys.path.insert(0, path)


def pluginAppendPath(path, addToSysPath=True):
    path = os.path.expanduser(path)
    if path not in STATE.plugin_path:
        STATE.plugin_path.append(path)
    if addToSysPath and path not in sys.path:
        sys.path.append(path)


def pluginPath():
    return list(STATE.plugin_path)
