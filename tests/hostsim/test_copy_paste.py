"""Copy and paste, and saving, opening and clearing scripts."""

import pytest

import hostctl
import nuke
import nukescripts

CLIP = "%clipboard%"


def node_with_user_knobs():
    node = nuke.nodes.Blur(size=4.0, label="my label")
    node.addKnob(nuke.Tab_Knob("looks", "looks"))
    hidden = nuke.Text_Knob("look_uid", "abc123")
    hidden.setVisible(False)
    node.addKnob(hidden)
    button = nuke.PyScript_Knob("look_preset_1", "1")
    button.setTooltip("abc123")
    button.setCommand("print('apply abc123')")
    node.addKnob(button)
    node.addKnob(nuke.PythonKnob("look_knob_values"))
    return node


def knob_facts(node):
    return [(k.name(), k.Class(), k.label(), k.tooltip(), k.visible(), k.value())
            for k in node.allKnobs() if k.name() not in ("name", "selected")]


@pytest.mark.parametrize("target", ["clipboard", "file"])
def test_copy_and_paste_round_trip_every_knob_under_a_fresh_name(target, tmp_path):
    where = CLIP if target == "clipboard" else str(tmp_path / "preset.nk")
    node = node_with_user_knobs()
    assert nuke.nodeCopy(where) is False   # nothing selected: nothing written
    assert hostctl.clipboard() is None and not (tmp_path / "preset.nk").exists()
    node.selectOnly()
    assert nuke.nodeCopy(where) is True
    pasted = nuke.nodePaste(where)
    assert pasted is not node and (pasted.Class(), pasted.name()) == ("Blur", "Blur2")
    assert knob_facts(pasted) == knob_facts(node)
    assert pasted["look_preset_1"].command() == "print('apply abc123')"
    hidden = pasted["look_uid"]  # the host keeps a hidden knob as its INVISIBLE flag
    assert hidden.getFlag(nuke.INVISIBLE) and not hidden.visible()
    hidden.clearFlag(nuke.INVISIBLE)
    assert hidden.visible()
    assert nuke.selectedNodes() == [pasted] and not node.isSelected()
    assert (hostctl.clipboard() is not None) == (target == "clipboard")


def test_a_host_told_to_lose_its_writes_answers_as_if_it_had_written(tmp_path):
    nuke.nodes.Blur().selectOnly()
    hostctl.set_copy_writes_nothing()
    assert nuke.nodeCopy(str(tmp_path / "lost.nk")) is True and not (tmp_path / "lost.nk").exists()


def test_paste_hooks_onto_no_cleared_selection_and_lands_in_the_group_context_selecting_there():
    blur = nuke.nodes.Blur()
    container = nuke.nodes.Group()
    with container:
        inner = nuke.nodes.Dot()
        inner.selectOnly()
    blur.selectOnly()
    nuke.nodeCopy(CLIP)
    nukescripts.clear_selection_recursive()
    assert not blur.isSelected() and not inner.isSelected()
    pasted = nuke.nodePaste(CLIP)
    assert pasted.input(0) is None
    with container:
        stored = nuke.nodePaste(CLIP)
    assert container.nodes() == [inner, stored] and stored.name() == "Blur1"
    assert stored.input(0) is None and stored.isSelected()
    assert nuke.selectedNodes() == [pasted]


def test_root_name_follows_save_as_but_not_save_to_another_file_and_clearing_resets_all(tmp_path):
    assert nuke.root().name() == "Root"
    with pytest.raises(RuntimeError):
        nuke.scriptName()
    with pytest.raises(RuntimeError):
        nuke.scriptSave()
    copy = tmp_path / "copy.nk"
    assert nuke.scriptSave(str(copy)) is True and copy.exists()
    assert nuke.root().name() == "Root"
    blur = nuke.nodes.Blur()
    blur.selectOnly()
    nuke.root()["proxy"].setValue(True)
    shot = str(tmp_path / "shot.nk")
    nuke.scriptSaveAs(shot)
    assert nuke.root().name() == shot and nuke.scriptName() == shot
    assert " name {}\n".format(shot) in open(shot).read()
    nuke.nodes.Group().begin()
    nuke.scriptClear()
    assert nuke.allNodes() == [] and nuke.selectedNodes() == []
    assert nuke.root().name() == "Root" and nuke.root()["proxy"].value() is False
    assert nuke.thisGroup() is nuke.root()
    with pytest.raises(ValueError):
        blur.name()
