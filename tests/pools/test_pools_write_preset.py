"""Writing a preset from the export window: the checks, the target folder, the overwrite
question, the keys of the name field, and what lands on disk and in the host."""

import pytest
from PySide2 import QtCore

pytestmark = pytest.mark.usefixtures("windows")


@pytest.fixture
def blur(nuke):
    node = nuke.nodes.Blur(size=7.0)
    nuke.nodes.Grade().setSelected(True)  # something else selected: the preset is the Blur alone
    return node


def type_name(qtbot, window, text):
    window.input_name.clear()
    qtbot.keyClicks(window.input_name, text)


def preset_nodes(nuke, path):
    """What a preset file brings into a fresh script."""
    import hostctl

    hostctl.reset()
    nuke.nodePaste(str(path))
    return sorted(n.Class() for n in nuke.allNodes())


def test_return_in_the_name_field_writes_the_node_into_its_class_folder(
        rig, nuke, pool, blur, qtbot, messages):
    window = rig.show_export_window(blur)
    type_name(qtbot, window, "  soft edge ")
    qtbot.keyClick(window.input_name, QtCore.Qt.Key_Return)

    preset = pool / "nodes" / "Blur" / "soft edge.nk"
    assert preset.is_file()
    assert messages == ["Successfully exported preset."]
    assert messages.parent_visible == [False]
    assert [n.name() for n in nuke.selectedNodes()] == [blur.name()]
    assert preset_nodes(nuke, preset) == ["Blur"]


def test_the_keypad_enter_does_not_save(rig, nuke, pool, blur, qtbot, messages):
    window = rig.show_export_window(blur)
    type_name(qtbot, window, "soft")
    qtbot.keyClick(window.input_name, QtCore.Qt.Key_Enter, QtCore.Qt.KeypadModifier)
    assert not (pool / "nodes" / "Blur" / "soft.nk").exists()
    assert window.isVisible() and messages == []


@pytest.mark.parametrize("name, folder, message", [
    ("", "nodes/Blur", "Please enter a name"),
    ("   ", "nodes/Blur", "Please enter a name"),
    ("soft", None, "Please select a folder"),
    ("soft", "", "Please select a folder"),
    ("soft", "nodes", "Please select a folder"),
    ("soft", "toolsets", "Please select a folder"),
])
def test_refusals_leave_the_window_open_and_write_nothing(
        rig, nuke, pool, blur, qtbot, user, messages, name, folder, message):
    window = rig.show_export_window(blur)
    if folder is None:
        window.tree.setCurrentItem(None)
    else:
        user.click(window, pool / folder if folder else pool)
    type_name(qtbot, window, name)
    qtbot.mouseClick(window.push_save, QtCore.Qt.LeftButton)

    assert messages == [message]
    assert window.isVisible() and window.input_name.text() == name
    assert sorted(p.name for p in pool.rglob("*.nk")) == ["glow.nk", "warm.nk"]


@pytest.mark.parametrize("go_ahead", [False, True])
def test_saving_over_a_clicked_preset_asks_first(rig, nuke, pool, qtbot, user, ask, messages,
                                                 go_ahead):
    preset = pool / "nodes" / "Grade" / "warm.nk"
    preset.write_text("not a script yet")
    window = rig.show_export_window(nuke.nodes.Grade())
    user.click(window, preset)
    ask.reply = go_ahead
    qtbot.mouseClick(window.push_save, QtCore.Qt.LeftButton)

    assert ask.calls == [(
        "Overwrite preset?",
        "The preset 'warm' already exists in the pool 'main'. Do you want to overwrite it?",
        "overwrite warm", "45,0,0")]
    if go_ahead:
        assert preset_nodes(nuke, preset) == ["Grade"]
        assert messages == ["Successfully exported preset."]
    else:
        assert preset.read_text() == "not a script yet"
        assert window.isVisible() and messages == []


@pytest.mark.parametrize("name, folder, lands", [
    ("wide/soft", "nodes/Blur", "nodes/Blur/wide/soft.nk"),
    ("soft", "toolsets/fx", "toolsets/fx/soft.nk"),  # the mode does not restrict the folder
])
def test_where_a_node_preset_lands(rig, nuke, pool, blur, qtbot, user, messages, name, folder,
                                   lands):
    window = rig.show_export_window(blur)
    user.click(window, pool / folder)
    type_name(qtbot, window, name)
    qtbot.mouseClick(window.push_save, QtCore.Qt.LeftButton)
    assert (pool / lands).is_file()
    assert messages == ["Successfully exported preset."]


def test_a_toolset_is_the_selection_at_the_moment_of_saving(rig, nuke, pool, qtbot, user,
                                                            messages):
    nuke.nodes.Blur().setSelected(True)
    window = rig.show_export_window("toolsets")
    grade = nuke.nodes.Grade()
    merge = nuke.nodes.Merge2()
    grade.selectOnly()
    merge.setSelected(True)

    user.click(window, pool / "toolsets" / "fx")
    type_name(qtbot, window, "comp")
    qtbot.keyClick(window.input_name, QtCore.Qt.Key_Return)

    assert sorted(n.name() for n in nuke.selectedNodes()) == sorted([grade.name(), merge.name()])
    assert preset_nodes(nuke, pool / "toolsets" / "fx" / "comp.nk") == ["Grade", "Merge2"]


def test_a_folder_that_cannot_be_made_is_reported_and_the_host_has_the_last_word(
        rig, nuke, pool, blur, qtbot, user, messages, capsys):
    (pool / "nodes" / "Blur").mkdir()
    (pool / "nodes" / "Blur" / "wide").write_text("a file in the way")
    window = rig.show_export_window(blur)
    user.click(window, pool / "nodes" / "Blur")
    type_name(qtbot, window, "wide/deep/soft")
    qtbot.mouseClick(window.push_save, QtCore.Qt.LeftButton)

    assert messages[0].startswith("Cannot create directory under this path. ")
    # The host then fails to write: the window stays and no success is claimed.
    assert len(messages) == 1 and window.isVisible()
    assert "write_node_as_preset failed" in capsys.readouterr().err
