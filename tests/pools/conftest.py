"""Fixtures of the pool suites: pools on disk in the test's settings store, the windows closed
after each test, recording stand-ins for the sibling dialogs, and a user working a tree."""

import pytest
from cobaltRig.qt import QtCore, QtWidgets


@pytest.fixture
def helper():
    from cobaltRig import helper as helper_module

    return helper_module


@pytest.fixture
def make_pool(tmp_path, helper):
    """make_pool(name, *entries): entries ending in "/" are folders, others empty files; the first
    pool made is the current one."""
    made = {}

    def make(name, *entries):
        root = tmp_path / "pools" / name
        root.mkdir(parents=True)
        for entry in entries:
            (root / entry.rstrip("/")).parent.mkdir(parents=True, exist_ok=True)
            if entry.endswith("/"):
                (root / entry).mkdir(exist_ok=True)
            else:
                (root / entry).write_text("")
        made[name] = str(root)
        helper.save_pools(made)
        if len(made) == 1:
            helper.update_xml("current_pool", name)
        return root

    return make


@pytest.fixture
def pool(make_pool):
    return make_pool("main", "nodes/Grade/warm.nk", "toolsets/fx/glow.nk")


@pytest.fixture
def advanced(helper, monkeypatch):
    """advanced(key=value, ...) overrides advanced settings."""
    def override(**values):
        mapping = dict(helper.parse_advanced_settings(), **values)
        monkeypatch.setattr(helper, "parse_advanced_settings", lambda: dict(mapping))

    return override


@pytest.fixture
def messages(helper, monkeypatch):
    """(text, whether the window it was shown over was still open) of each message box."""
    shown = []
    monkeypatch.setattr(helper, "show_message_box",
                        lambda parent, text: shown.append((text, parent.isVisible())))
    return shown


@pytest.fixture
def ask(helper, monkeypatch):
    """Stands in for the question dialog: records each call in `ask.calls`, answers `ask.reply`."""
    def fake(title, message, process_label="ok", color_process=None):
        fake.calls.append((title, message, process_label, color_process))
        return fake.reply

    fake.calls, fake.reply = [], False
    monkeypatch.setattr(helper, "ask_dialog", fake)
    return fake


@pytest.fixture
def answer_input():
    """answer_input(text) answers the next modal QInputDialog with text (None cancels); returns a
    list that receives the dialog's title, label and starting text."""
    seen = []

    def schedule(text):
        def fill():
            dialog = QtWidgets.QApplication.activeModalWidget()
            if not isinstance(dialog, QtWidgets.QInputDialog):
                return QtCore.QTimer.singleShot(10, fill)
            seen.append((dialog.windowTitle(), dialog.labelText(), dialog.textValue()))
            dialog.setTextValue(text or "")
            dialog.reject() if text is None else dialog.accept()

        QtCore.QTimer.singleShot(0, fill)
        return seen

    return schedule


@pytest.fixture(autouse=True)
def windows(rig):
    yield
    for slot in ("exportwindow", "i"):
        window = rig.__dict__.pop(slot, None)
        if window is not None:
            if window.tree_menu is not None:
                window.tree_menu.close()
            window.close()


class TreeUser:
    def __init__(self, qtbot):
        self.qtbot = qtbot
        self.seen = {}

    def items(self, window):
        """Every item of the window's tree as {path: item}, kept for the test's life: PySide6
        declares an item dead once the object of its parent, got through `parent()`, goes."""
        found, it = {}, QtWidgets.QTreeWidgetItemIterator(window.tree)
        while it.value():
            found[it.value().data(0, QtCore.Qt.ItemDataRole.UserRole)] = it.value()
            it += 1
        self.seen.update(found)
        return found

    def click(self, window, path, double=False):
        item = self.items(window)[str(path)]
        parent = item.parent()
        while parent is not None:
            parent.setExpanded(True)
            parent = parent.parent()
        window.tree.scrollToItem(item)
        pos = window.tree.visualItemRect(item).center()
        self.qtbot.mouseClick(window.tree.viewport(), QtCore.Qt.LeftButton, pos=pos)
        if double:
            self.qtbot.mouseDClick(window.tree.viewport(), QtCore.Qt.LeftButton, pos=pos)

    def open_menu(self, window, path=None):
        """Makes `path` current (if given) and asks for the tree's context menu."""
        if path is not None:
            self.click(window, path)
        window.tree.customContextMenuRequested.emit(QtCore.QPoint(2, 2))
        return window.tree_menu


@pytest.fixture
def user(qtbot):
    return TreeUser(qtbot)
