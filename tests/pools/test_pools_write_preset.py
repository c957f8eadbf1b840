"""Writing a preset from the export window: the checks, the target folder, the overwrite
question, the keys of the name field, and what lands on disk and in the host."""

import pytest
from PySide2 import QtCore

SUCCESS = ("Successfully exported preset.", False)  # shown after the window has closed


@pytest.fixture
def blur(nuke):
    node = nuke.nodes.Blur(size=7.0)
    nuke.nodes.Grade().setSelected(True)  # something else selected: the preset is the Blur alone
    return node


def save(qtbot, window, name, key=None):
    window.input_name.clear()
    qtbot.keyClicks(window.input_name, name)
    if key is None:
        qtbot.mouseClick(window.push_save, QtCore.Qt.LeftButton)
    else:
        qtbot.keyClick(window.input_name, key, *(() if key == QtCore.Qt.Key_Return
                                                 else (QtCore.Qt.KeypadModifier,)))


def preset_nodes(nuke, path):
    """What a preset file brings into a fresh script."""
    import hostctl

    hostctl.reset()
    nuke.nodePaste(str(path))
    return sorted(n.Class() for n in nuke.allNodes())


def test_return_saves_into_the_class_folder_and_keypad_enter_does_not(
        rig, nuke, pool, blur, qtbot, messages):
    window = rig.show_export_window(blur)
    save(qtbot, window, "soft", QtCore.Qt.Key_Enter)
    assert not (pool / "nodes" / "Blur" / "soft.nk").exists()
    assert window.isVisible() and messages == []

    save(qtbot, window, "  soft edge ", QtCore.Qt.Key_Return)
    assert (pool / "nodes" / "Blur" / "soft edge.nk").is_file()
    assert messages == [SUCCESS] and not window.isVisible()


@pytest.mark.parametrize("name, folder, message", [
    ("   ", "nodes/Blur", "Please enter a name"),
    ("soft", None, "Please select a folder"),
    ("soft", "", "Please select a folder"),
    ("soft", "nodes", "Please select a folder"),
    ("soft", "toolsets", "Please select a folder"),
])
def test_refusals_leave_the_window_open_and_write_nothing(
        rig, pool, blur, qtbot, user, messages, name, folder, message):
    window = rig.show_export_window(blur)
    if folder is None:
        window.tree.setCurrentItem(None)
    else:
        user.click(window, pool / folder if folder else pool)
    save(qtbot, window, name)

    assert messages == [(message, True)] and window.input_name.text() == name
    assert sorted(p.name for p in pool.rglob("*.nk")) == ["glow.nk", "warm.nk"]


@pytest.mark.parametrize("go_ahead", [False, True])
def test_saving_under_a_clicked_presets_name_asks_first(rig, nuke, pool, qtbot, user, ask, messages,
                                                 go_ahead):
    preset = pool / "nodes" / "Grade" / "warm.nk"
    preset.write_text("not a script yet")
    window = rig.show_export_window(nuke.nodes.Grade())
    user.click(window, preset)  # fills the name
    user.click(window, pool / "toolsets" / "fx")
    assert window.input_name.text() == "warm"  # a folder leaves it
    user.click(window, preset)
    ask.reply = go_ahead
    qtbot.mouseClick(window.push_save, QtCore.Qt.LeftButton)

    assert ask.calls == [(
        "Overwrite preset?",
        "The preset 'warm' already exists in the pool 'main'. Do you want to overwrite it?",
        "overwrite warm", "45,0,0")]
    if go_ahead:
        assert preset_nodes(nuke, preset) == ["Grade"] and messages == [SUCCESS]
    else:
        assert preset.read_text() == "not a script yet"
        assert window.isVisible() and messages == []


@pytest.mark.parametrize("toolset, name, folder, lands, classes", [
    (False, "wide/soft", "nodes/Blur", "nodes/Blur/wide/soft.nk", ["Blur"]),
    (False, "soft", "toolsets/fx", "toolsets/fx/soft.nk", ["Blur"]),  # any folder, any mode
    # a toolset is the selection of the moment of saving, not of opening
    (True, "comp", "toolsets/fx", "toolsets/fx/comp.nk", ["Grade", "Merge2"]),
])
def test_where_a_preset_lands_and_what_it_holds(rig, nuke, pool, blur, qtbot, user, messages,
                                                toolset, name, folder, lands, classes):
    window = rig.show_export_window("toolsets" if toolset else blur)
    grade, merge = nuke.nodes.Grade(), nuke.nodes.Merge2()
    grade.selectOnly()
    merge.setSelected(True)
    user.click(window, pool / folder)
    save(qtbot, window, name)

    assert messages == [SUCCESS]
    selected = [grade.name(), merge.name()] if toolset else [blur.name()]
    assert sorted(n.name() for n in nuke.selectedNodes()) == sorted(selected)
    assert preset_nodes(nuke, pool / lands) == classes


def test_a_folder_that_cannot_be_made_is_reported_and_the_host_has_the_last_word(
        rig, pool, blur, qtbot, user, messages, capsys):
    (pool / "nodes" / "Blur").mkdir()
    (pool / "nodes" / "Blur" / "wide").write_text("a file in the way")
    window = rig.show_export_window(blur)
    user.click(window, pool / "nodes" / "Blur")
    save(qtbot, window, "wide/deep/soft")

    # the host then fails to write: the window stays and no success is claimed
    assert [text[:41] for text, _ in messages] == ["Cannot create directory under this path. "]
    assert window.isVisible()
    assert "write_node_as_preset failed" in capsys.readouterr().err
