"""What a user does to presets in the import tree: the context menu, insert, rename, delete."""

import pytest
from PySide2 import QtCore

pytestmark = pytest.mark.usefixtures("windows")


@pytest.fixture
def library(make_pool, nuke, tmp_path):
    """A pool whose presets are real host scripts."""
    pool = make_pool("lib", "nodes/Grade/", "toolsets/fx/sub/")
    nuke.nodes.Grade(label="warm").selectOnly()
    nuke.nodeCopy(str(pool / "nodes" / "Grade" / "warm.nk"))
    nuke.nodeCopy(str(pool / "nodes" / "Grade" / "cold.nk"))
    nuke.nodeCopy(str(pool / "toolsets" / "fx" / "sub" / "deep.nk"))
    import hostctl

    hostctl.reset()
    return pool


def open_menu(window, user, path):
    user.click(window, path)
    window.tree.customContextMenuRequested.emit(QtCore.QPoint(2, 2))
    return window.tree_menu


@pytest.mark.parametrize("rename, delete, entries", [
    ("True", "True", ["insert in dag", "reveal in file browser", "refresh", "rename", "delete"]),
    ("False", "False", ["insert in dag", "reveal in file browser", "refresh"]),
    ("yes", "True", ["insert in dag", "reveal in file browser", "refresh", "delete"]),
])
def test_the_menu_of_a_preset(rig, library, user, helper, monkeypatch, rename, delete, entries):
    advanced = dict(helper.parse_advanced_settings(), items_rename=rename, items_delete=delete)
    monkeypatch.setattr(helper, "parse_advanced_settings", lambda: dict(advanced))
    monkeypatch.setattr(helper, "get_explorer_name", lambda: "file browser")
    window = rig.import_preset()
    menu = open_menu(window, user, library / "nodes" / "Grade" / "warm.nk")
    assert menu.isVisible()
    assert [a.text() for a in menu.actions()] == entries


def test_folders_get_no_menu_and_nothing_current_gets_none(rig, library, user):
    window = rig.import_preset()
    window.tree.customContextMenuRequested.emit(QtCore.QPoint(2, 2))
    assert window.tree_menu is None
    assert not open_menu(window, user, library / "nodes" / "Grade").isVisible()


@pytest.mark.parametrize("how", ["menu", "double click"])
def test_inserting_a_preset_puts_its_nodes_into_the_graph(rig, nuke, library, user, messages,
                                                          how):
    window = rig.import_preset()
    preset = library / "nodes" / "Grade" / "warm.nk"
    if how == "menu":
        open_menu(window, user, preset)
        window.action_insert.trigger()
    else:
        user.click(window, preset, double=True)
    assert [(n.Class(), n["label"].value()) for n in nuke.allNodes()] == [("Grade", "warm")]
    assert window.isVisible() and messages == []


@pytest.mark.parametrize("damage, message", [
    ("remove", "The file wasn't found. It doesn't exist anymore."),
    ("garble", "An error occurred. "),
])
def test_an_insert_that_fails_is_reported(rig, nuke, library, user, messages, damage, message):
    window = rig.import_preset()
    preset = library / "nodes" / "Grade" / "warm.nk"
    open_menu(window, user, preset)
    if damage == "remove":
        preset.unlink()
    else:
        preset.write_text("this is { not a script")
    window.action_insert.trigger()
    assert len(messages) == 1 and messages[0].startswith(message)
    assert nuke.allNodes() == [] and window.isVisible()


def test_a_double_click_on_a_folder_says_the_file_is_missing(rig, library, user, messages):
    window = rig.import_preset()
    user.click(window, library / "toolsets" / "fx", double=True)
    assert messages == ["The file wasn't found. It doesn't exist anymore."]


@pytest.mark.parametrize("typed, remaining", [
    ("hot", ["cold.nk", "hot.nk"]),
    ("a.b", ["a.nk", "cold.nk"]),
    (".hidden", [".nk", "cold.nk"]),
    ("warm", ["cold.nk", "warm.nk"]),
    ("", ["cold.nk", "warm.nk"]),
    (None, ["cold.nk", "warm.nk"]),
])
def test_renaming(rig, library, user, messages, answer_input, typed, remaining):
    window = rig.import_preset()
    grade = library / "nodes" / "Grade"
    open_menu(window, user, grade / "warm.nk")
    seen = answer_input(typed)
    window.action_rename.trigger()

    assert seen == [("rename", "Rename item: ", "warm")]
    assert sorted(p.name for p in grade.iterdir()) == remaining
    assert messages == []
    if typed:
        # rebuilt, with the preset's folder still open
        assert window.dirlist[str(grade)].isExpanded()
        assert window.tree.currentItem() is None


def test_a_rename_never_replaces_another_preset(rig, library, user, messages, answer_input):
    window = rig.import_preset()
    grade = library / "nodes" / "Grade"
    before = {p.name: p.read_bytes() for p in grade.iterdir()}
    open_menu(window, user, grade / "warm.nk")
    answer_input("cold")
    window.action_rename.trigger()
    assert len(messages) == 1 and messages[0].startswith("An error occured. ")
    assert {p.name: p.read_bytes() for p in grade.iterdir()} == before


@pytest.mark.parametrize("go_ahead", [True, False])
def test_deleting_asks_and_keeps_the_folder_open(rig, library, user, ask, messages, go_ahead):
    window = rig.import_preset()
    sub = library / "toolsets" / "fx" / "sub"
    open_menu(window, user, sub / "deep.nk")
    ask.reply = go_ahead
    window.action_delete.trigger()

    assert ask.calls == [("Confirm deletion", "Delete 'deep'?", "delete deep", "45,0,0")]
    assert (sub / "deep.nk").exists() != go_ahead
    assert messages == []
    if go_ahead:
        assert window.dirlist[str(sub)].isExpanded()
        assert not window.dirlist[str(library / "toolsets" / "fx")].isExpanded()


def test_in_a_pool_whose_path_holds_nk_folders_get_the_menu_and_a_delete_fails(
        rig, make_pool, user, ask, messages):
    pool = make_pool("odd.nk", "nodes/Grade/", "toolsets/")
    window = rig.import_preset()
    menu = open_menu(window, user, pool / "nodes" / "Grade")
    assert menu.isVisible()
    ask.reply = True
    window.action_delete.trigger()
    assert len(messages) == 1 and messages[0].startswith("An error occured. ")
    assert (pool / "nodes" / "Grade").is_dir()


def test_reveal_and_refresh(rig, library, user, helper, monkeypatch):
    opened = []
    monkeypatch.setattr(helper, "open_in_explorer",
                        lambda path, parent=None: opened.append((path, parent.windowTitle())))
    window = rig.import_preset()
    grade = library / "nodes" / "Grade"
    open_menu(window, user, grade / "warm.nk")
    window.action_reveal.trigger()
    assert opened == [(str(grade), "Import node/toolset")]

    (grade / "new.nk").write_text("")
    window.action_refresh.trigger()
    assert str(grade / "new.nk") in user.items(window)


def test_escape_and_close_end_the_window(rig, library, qtbot):
    window = rig.import_preset()
    qtbot.keyClick(window.widget, QtCore.Qt.Key_Escape)
    assert not window.isVisible()
    window = rig.import_preset()
    qtbot.mouseClick(window.push_close, QtCore.Qt.LeftButton)
    assert not window.isVisible()


def test_a_window_replaced_while_its_delete_question_is_open_deletes_nothing(
        rig, library, user, helper, monkeypatch, messages, capsys):
    window = rig.import_preset()
    preset = library / "nodes" / "Grade" / "warm.nk"
    open_menu(window, user, preset)
    replaced = []

    def ask_dialog(title, message, process_label="ok", color_process=None):
        # Like the real question, this one runs an event loop of its own, in which the user
        # presses the import hotkey again before saying yes.
        loop = QtCore.QEventLoop()

        def press_hotkey():
            replaced.append(rig.import_preset())
            QtCore.QTimer.singleShot(20, loop.quit)

        QtCore.QTimer.singleShot(0, press_hotkey)
        loop.exec_()
        return True

    monkeypatch.setattr(helper, "ask_dialog", ask_dialog)
    action = window.action_delete
    del window  # the slot holds the only reference, as in the host
    action.trigger()

    assert rig.i is replaced[0] and rig.i.isVisible()
    assert preset.exists()
    assert messages == [] and capsys.readouterr().err == ""
