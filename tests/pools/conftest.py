"""Fixtures of the pool suites: a pool on disk in the test's settings store, windows that are
closed and dropped after the test, and recording stand-ins for the sibling dialogs."""


import pytest
from PySide2 import QtCore, QtWidgets


@pytest.fixture
def helper():
    from cobaltRig import helper as helper_module

    return helper_module


@pytest.fixture
def make_pool(tmp_path, helper):
    """make_pool(name, *relative paths) lays out a pool and stores it; paths ending in "/" are
    folders, others empty files. The first pool made is the current one."""
    made = {}

    def make(name, *entries):
        root = tmp_path / "pools" / name
        root.mkdir(parents=True)
        for entry in entries:
            target = root / entry
            if entry.endswith("/"):
                target.mkdir(parents=True, exist_ok=True)
            else:
                target.parent.mkdir(parents=True, exist_ok=True)
                target.write_text("")
        made[name] = str(root)
        helper.save_pools(made)
        if len(made) == 1:
            helper.update_xml("current_pool", name)
        return root

    return make


@pytest.fixture
def pool(make_pool):
    """The standard layout with one preset of each kind."""
    return make_pool("main", "nodes/Grade/warm.nk", "toolsets/fx/glow.nk")


class Messages(list):
    def __init__(self):
        super().__init__()
        self.parent_visible = []


@pytest.fixture
def messages(helper, monkeypatch):
    """The texts helper.show_message_box showed, oldest first; `.parent_visible` says for each
    whether the window it was shown over was still open."""
    shown = Messages()

    def show(parent, text):
        shown.append(text)
        shown.parent_visible.append(parent is not None and parent.isVisible())

    monkeypatch.setattr(helper, "show_message_box", show)
    return shown


class AskDialog:
    def __init__(self):
        self.calls = []
        self.reply = False

    def __call__(self, title, message, process_label="ok", color_process=None):
        self.calls.append((title, message, process_label, color_process))
        return self.reply


@pytest.fixture
def ask(helper, monkeypatch):
    """helper.ask_dialog answering `ask.reply`, recording each question."""
    fake = AskDialog()
    monkeypatch.setattr(helper, "ask_dialog", fake)
    return fake


@pytest.fixture
def answer_input():
    """answer_input(text) answers the next modal QInputDialog with text (None cancels), the way
    a user types into it; returns a list that receives the dialog's title and label."""
    seen = []

    def schedule(text):
        def fill():
            dialog = QtWidgets.QApplication.activeModalWidget()
            if not isinstance(dialog, QtWidgets.QInputDialog):
                QtCore.QTimer.singleShot(10, fill)
                return
            seen.append((dialog.windowTitle(), dialog.labelText(), dialog.textValue()))
            if text is None:
                dialog.reject()
            else:
                dialog.setTextValue(text)
                dialog.accept()

        QtCore.QTimer.singleShot(0, fill)
        return seen

    return schedule


@pytest.fixture
def windows(rig):
    """Closes and drops the pool windows after the test."""
    yield
    for slot in ("exportwindow", "i"):
        window = rig.__dict__.pop(slot, None)
        if window is not None:
            if window.tree_menu is not None:
                window.tree_menu.close()
            window.close()


class TreeUser:
    """Works a window's tree the way a user does: looks at its items and clicks them."""

    def __init__(self, qtbot):
        self.qtbot = qtbot

    @staticmethod
    def items(window):
        """Every item of the window's tree as {path: item}."""
        found = {}

        def visit(item):
            found[item.data(0, QtCore.Qt.UserRole)] = item
            for k in range(item.childCount()):
                visit(item.child(k))

        for k in range(window.tree.topLevelItemCount()):
            visit(window.tree.topLevelItem(k))
        return found

    def click(self, window, path, double=False):
        """Clicks the item of `path`, scrolling it into view first."""
        item = self.items(window)[str(path)]
        parent = item.parent()
        while parent is not None:
            parent.setExpanded(True)
            parent = parent.parent()
        # The tree's wrapper must outlive the viewport's: PySide2 invalidates a child's wrapper
        # when its parent's wrapper goes.
        tree = window.tree
        tree.scrollToItem(item)
        pos = tree.visualItemRect(item).center()
        viewport = tree.viewport()
        self.qtbot.mouseClick(viewport, QtCore.Qt.LeftButton, pos=pos)
        if double:
            self.qtbot.mouseDClick(viewport, QtCore.Qt.LeftButton, pos=pos)
        return item

    @staticmethod
    def visible_labels(window):
        """Labels of the items a user can see (not hidden, all parents open), in tree order."""
        labels = []

        def visit(item, shown):
            if item.isHidden():
                return
            if shown:
                labels.append(item.text(0))
            for k in range(item.childCount()):
                visit(item.child(k), shown and item.isExpanded())

        for k in range(window.tree.topLevelItemCount()):
            visit(window.tree.topLevelItem(k), True)
        return labels


@pytest.fixture
def user(qtbot):
    return TreeUser(qtbot)
