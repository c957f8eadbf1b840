"""Writing a preset from the export window: the checks, the target folder, the overwrite
question, the keys of the name field, and what lands on disk and in the host."""

import pytest
from cobaltRig.qt import QtCore

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


def bad_name(name, why):
    return "The name '{}' can't be used: a preset name can't {}.".format(name, why)


def tree_files(root):
    return sorted(str(p.relative_to(root)) for p in root.rglob("*"))


@pytest.mark.parametrize("name, folder, message", [
    ("   ", "nodes/Blur", "Please enter a name"),
    ("soft", None, "Please select a folder"),
    ("soft", "", "Please select a folder"),
    ("soft", "nodes", "Please select a folder"),
    ("soft", "toolsets", "Please select a folder"),
    # names that would leave or hide in their folder
    ("..", "nodes/Blur", bad_name("..", "begin with a dot")),
    (".hidden", "nodes/Blur", bad_name(".hidden", "begin with a dot")),
    ("../../../x", "nodes/Blur", bad_name("../../../x", "contain '/'")),
    ("/tmp/elsewhere", "nodes/Blur", bad_name("/tmp/elsewhere", "contain '/'")),
])
def test_refusals_leave_the_window_open_and_write_nothing(
        rig, pool, blur, qtbot, user, messages, tmp_path, name, folder, message):
    window = rig.show_export_window(blur)
    if folder is None:
        window.tree.setCurrentItem(None)
    else:
        user.click(window, pool / folder if folder else pool)
    before = tree_files(tmp_path)
    save(qtbot, window, name)

    assert messages == [(message, True)] and window.input_name.text() == name
    assert tree_files(tmp_path) == before


@pytest.mark.parametrize("go_ahead, linked", [(False, False), (True, False), (True, True)],
                         ids=["declined", "overwritten", "a link's target overwritten"])
def test_saving_under_a_clicked_presets_name_asks_first(rig, nuke, pool, qtbot, user, ask, messages,
                                                        tmp_path, go_ahead, linked):
    preset = pool / "nodes" / "Grade" / "warm.nk"
    target = tmp_path / "team" / "warm.nk" if linked else preset
    target.parent.mkdir(exist_ok=True)
    target.write_text("not a script yet")
    if linked:
        preset.unlink()
        preset.symlink_to(target)
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
        assert preset_nodes(nuke, target) == ["Grade"] and messages == [SUCCESS]
        assert preset.is_symlink() == linked
        assert sorted(p.name for p in target.parent.iterdir()) == ["warm.nk"]
    else:
        assert preset.read_text() == "not a script yet"
        assert window.isVisible() and messages == []


@pytest.mark.parametrize("source, folder, lands, classes", [
    ("node", "toolsets/fx", "toolsets/fx/soft.nk", ["Blur"]),  # any folder, any mode
    # a clicked preset stands for the folder that holds it, whatever the mode
    ("node", "toolsets/fx/glow.nk", "toolsets/fx/soft.nk", ["Blur"]),
    # a toolset is the selection of the moment of saving, not of opening
    ("toolsets", "toolsets/fx", "toolsets/fx/soft.nk", ["Grade", "Merge2"]),
    # a node is copied in its own group, not the root's selection
    ("node in a group", "nodes/Blur", "nodes/Blur/soft.nk", ["Blur"]),
])
def test_where_a_preset_lands_and_what_it_holds(rig, nuke, pool, blur, qtbot, user, messages,
                                                source, folder, lands, classes):
    if source == "node in a group":
        with nuke.nodes.Group(name="Group1"):
            blur = nuke.nodes.Blur(size=3.0)
    window = rig.show_export_window("toolsets" if source == "toolsets" else blur)
    grade, merge = nuke.nodes.Grade(), nuke.nodes.Merge2()
    grade.selectOnly()
    merge.setSelected(True)
    user.click(window, pool / folder)
    save(qtbot, window, "soft")

    assert messages == [SUCCESS]
    selected = [blur] if source == "node" else [grade, merge]
    assert sorted(n.name() for n in nuke.selectedNodes()) == sorted(n.name() for n in selected)
    assert preset_nodes(nuke, pool / lands) == classes


def test_a_folder_that_cannot_be_made_is_reported_and_the_host_has_the_last_word(
        rig, pool, blur, qtbot, user, messages):
    window = rig.show_export_window(blur)
    user.click(window, pool / "toolsets" / "fx" / "glow.nk")
    (pool / "toolsets" / "fx" / "glow.nk").unlink()
    (pool / "toolsets" / "fx").rmdir()
    (pool / "toolsets" / "fx").write_text("a file in the way")
    save(qtbot, window, "soft")

    # nor can the preset: said with the file's name, the window stays and no success is claimed
    texts = [text for text, _ in messages]
    assert texts[0].startswith("Cannot create directory under this path. ")
    assert len(texts) == 2 and "glow" not in texts[1] and "soft.nk" in texts[1]
    assert window.isVisible()


@pytest.mark.parametrize("copy", ["writes nothing", "fails half-way"])
def test_an_overwrite_the_host_does_not_finish_keeps_the_old_preset(
        rig, nuke, pool, qtbot, user, ask, messages, monkeypatch, capsys, copy):
    preset = pool / "nodes" / "Grade" / "warm.nk"
    preset.write_text("the old preset")
    window = rig.show_export_window(nuke.nodes.Grade())
    user.click(window, preset)
    ask.reply = True
    real_copy = nuke.nodeCopy

    def host_copy(path):
        if path == "%clipboard%" or not path.endswith(".tmp"):
            return real_copy(path)
        if copy == "fails half-way":
            with open(path, "w") as handle:
                handle.write("Grade {")
            raise RuntimeError("disk full")
        return True  # claims success and writes nothing, as a copy in the wrong group does

    monkeypatch.setattr(nuke, "nodeCopy", host_copy)
    qtbot.mouseClick(window.push_save, QtCore.Qt.LeftButton)

    assert preset.read_text() == "the old preset" and window.isVisible()
    assert sorted(p.name for p in preset.parent.iterdir()) == ["warm.nk"]  # no temporary left
    if copy == "writes nothing":
        assert messages == [("The preset '{}' was not written: the host wrote nothing.".format(preset), True)]
    else:
        assert messages == [] and "disk full" in capsys.readouterr().err

