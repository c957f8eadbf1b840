"""What a user does to presets in the import tree: the context menu, insert, rename, delete."""

import pytest
from cobaltRig.qt import QtCore, exec_dialog


@pytest.fixture
def library(make_pool, nuke):
    """A pool whose presets are real host scripts."""
    import hostctl

    pool = make_pool("lib", "nodes/Grade/", "toolsets/fx/sub/")
    nuke.nodes.Grade(label="warm").selectOnly()
    for preset in ("nodes/Grade/warm.nk", "nodes/Grade/cold.nk", "toolsets/fx/sub/deep.nk"):
        nuke.nodeCopy(str(pool / preset))
    hostctl.reset()
    return pool


@pytest.mark.parametrize("rename, delete, entries", [
    ("True", "True", ["insert in dag", "reveal in file browser", "refresh", "rename", "delete"]),
    ("False", "False", ["insert in dag", "reveal in file browser", "refresh"]),
    ("yes", "True", ["insert in dag", "reveal in file browser", "refresh", "delete"]),
])
def test_the_menu_of_a_preset_and_its_reveal(rig, library, user, helper, advanced, monkeypatch,
                                             rename, delete, entries):
    advanced(items_rename=rename, items_delete=delete)
    monkeypatch.setattr(helper, "get_explorer_name", lambda: "file browser")
    opened = []
    monkeypatch.setattr(helper, "open_in_explorer",
                        lambda path, parent=None: opened.append((path, parent.windowTitle())))
    window = rig.import_preset()
    assert user.open_menu(window) is None  # nothing current, no menu
    assert not user.open_menu(window, library / "nodes" / "Grade").isVisible()
    menu = user.open_menu(window, library / "nodes" / "Grade" / "warm.nk")
    assert menu.isVisible() and [a.text() for a in menu.actions()] == entries
    window.action_reveal.trigger()
    assert opened == [(str(library / "nodes" / "Grade"), "Import node/toolset")]


MISSING = "The file wasn't found. It doesn't exist anymore."


@pytest.mark.parametrize("how, inserted, message", [
    ("menu", [("Grade", "warm")], None),
    ("double click", [("Grade", "warm")], None),
    ("file removed", [], MISSING),
    ("double click on a folder", [], MISSING),
    ("file garbled", [], "An error occurred. "),
])
def test_inserting_a_preset(rig, nuke, library, user, messages, how, inserted, message):
    window = rig.import_preset()
    preset = library / "nodes" / "Grade" / "warm.nk"
    if how.startswith("double click"):
        user.click(window, library / "toolsets" / "fx" if "folder" in how else preset, double=True)
    else:
        user.open_menu(window, preset)
        if how == "file removed":
            preset.unlink()
        elif how == "file garbled":
            preset.write_text("this is { not a script")
        window.action_insert.trigger()
    assert [(n.Class(), n["label"].value()) for n in nuke.allNodes()] == inserted
    assert [text[:len(message)] for text, _ in messages] == ([message] if message else [])
    assert window.isVisible()


def test_inserting_a_preset_is_one_step_of_the_hosts_undo(rig, nuke, host, library, user):
    # a two-node preset over a graph of its own, so that one undo has more than one node to take
    blur = nuke.nodes.Blur(label="a")
    blur.selectOnly()
    nuke.createNode("Grade", inpanel=False)
    blur.setSelected(True)
    nuke.nodeCopy(str(library / "nodes" / "Grade" / "pair.nk"))
    nuke.nodes.CheckerBoard().selectOnly()
    before = host.script_text()
    window = rig.import_preset()
    user.open_menu(window, library / "nodes" / "Grade" / "pair.nk")
    window.action_insert.trigger()
    after = host.script_text()
    assert after != before
    assert nuke.Undo.undoDescribe(0) == "Insert preset pair"

    nuke.undo()
    assert host.script_text() == before
    nuke.redo()
    assert host.script_text() == after


@pytest.mark.parametrize("typed, remaining, message", [
    ("hot", ["cold.nk", "hot.nk"], None),
    ("a.b", ["a.nk", "cold.nk"], None),
    # names that would hide the preset or move it out of its folder are refused
    (".hidden", ["cold.nk", "warm.nk"], "The name '.hidden' can't be used"),
    ("../up", ["cold.nk", "warm.nk"], "The name '../up' can't be used"),
    ("/tmp/up", ["cold.nk", "warm.nk"], "The name '/tmp/up' can't be used"),
    ("warm", ["cold.nk", "warm.nk"], None),
    ("cold", ["cold.nk", "warm.nk"], "An error occured. "),  # never onto another preset
    ("", ["cold.nk", "warm.nk"], None),
    (None, ["cold.nk", "warm.nk"], None),
])
def test_renaming(rig, library, user, messages, answer_input, typed, remaining, message):
    window = rig.import_preset()
    grade = library / "nodes" / "Grade"
    before = (grade / "cold.nk").read_bytes()
    user.open_menu(window, grade / "warm.nk")
    seen = answer_input(typed)
    window.action_rename.trigger()

    assert seen == [("rename", "Rename item: ", "warm")]
    assert sorted(p.name for p in grade.iterdir()) == remaining
    assert (grade / "cold.nk").read_bytes() == before
    assert [text[:len(message)] for text, _ in messages] == ([message] if message else [])
    if typed and not message:  # rebuilt, with the preset's folder still open
        assert window.dirlist[str(grade)].isExpanded() and window.tree.currentItem() is None


@pytest.mark.parametrize("go_ahead", [True, False])
def test_deleting_asks_and_keeps_the_folder_open(rig, library, user, ask, messages, go_ahead):
    window = rig.import_preset()
    sub = library / "toolsets" / "fx" / "sub"
    user.open_menu(window, sub / "deep.nk")
    ask.reply = go_ahead
    window.action_delete.trigger()

    assert ask.calls == [("Confirm deletion", "Delete 'deep'?", "delete deep", "45,0,0")]
    assert (sub / "deep.nk").exists() != go_ahead and messages == []
    if go_ahead:
        assert window.dirlist[str(sub)].isExpanded()
        assert not window.dirlist[str(library / "toolsets" / "fx")].isExpanded()


def test_in_a_pool_whose_path_holds_nk_folders_get_the_menu_and_a_delete_fails(
        rig, make_pool, user, ask, messages):
    pool = make_pool("odd.nk", "nodes/Grade/", "toolsets/")
    window = rig.import_preset()
    assert user.open_menu(window, pool / "nodes" / "Grade").isVisible()
    ask.reply = True
    window.action_delete.trigger()
    assert [text[:18] for text, _ in messages] == ["An error occured. "]
    assert (pool / "nodes" / "Grade").is_dir()


def test_a_window_replaced_while_its_delete_question_is_open_deletes_nothing(
        rig, library, user, helper, monkeypatch, messages, capsys):
    window = rig.import_preset()
    preset = library / "nodes" / "Grade" / "warm.nk"
    user.open_menu(window, preset)

    def ask_dialog(*args, **kwargs):
        # Like the real question it runs its own event loop, in which the user presses the
        # import hotkey again before saying yes.
        loop = QtCore.QEventLoop()

        def press_hotkey():
            rig.import_preset()
            QtCore.QTimer.singleShot(20, loop.quit)  # after the press, however late it came

        QtCore.QTimer.singleShot(0, press_hotkey)
        exec_dialog(loop)
        return True

    monkeypatch.setattr(helper, "ask_dialog", ask_dialog)
    action = window.action_delete
    del window  # the slot holds the only reference, as in the host
    action.trigger()

    assert rig.i.isVisible() and preset.exists()
    assert messages == [] and capsys.readouterr().err == ""


def test_the_look_tab_of_a_node_in_a_group_exports_that_node_and_imports_into_its_group(
        rig, nuke, library, user):
    group = nuke.nodes.Group(name="Group1")
    with group:
        inner = nuke.nodes.Blur()
    nuke.nodes.Merge2().setSelected(True)  # the root's selection is not the tab's node
    rig.create_looks_widgets(inner)
    inner["preset_export"].execute()
    assert rig.exportwindow.node is inner and rig.exportwindow.isVisible()
    assert rig.exportwindow.widget.windowTitle() == "Export Blur look"

    inner["preset_import"].execute()  # from the look tab, while the host shows the root
    assert rig.i.isVisible() and rig.i.combo_pool.currentText() == "lib"
    rig.i.insert_in_dag(str(library / "nodes" / "Grade" / "warm.nk"))
    assert [n.Class() for n in nuke.allNodes()] == ["Group", "Merge2"]
    assert sorted(n.Class() for n in group.nodes()) == ["Blur", "Grade"]
