"""Overwriting and removing a look through the host's panels."""

import pytest

from looks_testing import look_knobs, store, stored_copies

UPDATE = ("Update preset", "Select a preset to update", "look_update")
DELETE = ("Delete preset", "Select a preset to delete", "look_delete")


@pytest.fixture
def blur_with_looks(rig, nuke, chain):
    """Blur1 with looks 1, 2 and 10, mix 1.0, 0.2 and 0.3 respectively."""
    _, blur, _ = chain
    for mix in (1.0, 0.2) + (0.3,) * 8:
        blur["mix"].setValue(mix)
        store(blur)
    for index in range(3, 10):
        blur.removeKnob(blur["look_preset_{}".format(index)])
    return blur


@pytest.mark.parametrize("panel", [UPDATE, DELETE])
def test_cancelling_changes_nothing(rig, nuke, host, blur_with_looks, panel):
    title, pulldown, button = panel
    blur = blur_with_looks
    host.set_clipboard("the artist's copy")
    nuke.createNode("NoOp", inpanel=False)
    copies = dict(stored_copies(nuke))
    host.queue_panel(0, {pulldown: "2"})

    blur[button].execute()

    [shown] = host.panels_shown
    assert shown["title"] == title and shown["pulldowns"] == {pulldown: ["1", "10", "2"]}
    assert look_knobs(blur) == ["look_preset_1", "look_preset_2", "look_preset_10"]
    assert stored_copies(nuke) == copies
    assert host.clipboard() == "the artist's copy"
    assert [n.Class() for n in nuke.selectedNodes()] == ["NoOp"]


def test_update_overwrites_the_copy_and_keeps_the_uid(rig, nuke, host, blur_with_looks):
    blur = blur_with_looks
    blur = rig.apply_preset(blur, blur["look_preset_1"].tooltip(), "1")
    uid = blur["look_preset_2"].tooltip()
    command = blur["look_preset_2"].command()
    blur["mix"].setValue(0.9)
    host.queue_panel(1, {UPDATE[1]: "2"})

    blur["look_update"].execute()

    assert blur["look_preset_2"].tooltip() == uid and blur["look_preset_2"].command() == command
    assert blur["looks"].tooltip() == "1"
    copy = stored_copies(nuke)[uid]
    assert copy["mix"].value() == 0.9 and look_knobs(copy) == []
    assert len(stored_copies(nuke)) == 10
    blur["look_preset_2"].execute()
    assert nuke.toNode("Blur1")["mix"].value() == 0.9


def test_delete_removes_knob_and_copy_and_leaves_the_gap(rig, nuke, host, blur_with_looks):
    blur = blur_with_looks
    uid = blur["look_preset_10"].tooltip()
    host.queue_panel(1, {DELETE[1]: "10"})

    blur["look_delete"].execute()

    assert look_knobs(blur) == ["look_preset_1", "look_preset_2"]
    assert uid not in stored_copies(nuke) and len(stored_copies(nuke)) == 9
    assert blur.knob("looks") is not None and host.messages == []
    store(blur)
    assert look_knobs(blur)[-1] == "look_preset_3"


@pytest.mark.parametrize("panel", [UPDATE, DELETE])
def test_a_node_without_looks_offers_an_empty_pulldown(rig, nuke, host, chain, panel):
    _, blur, _ = chain
    rig.create_looks_widgets(blur)
    host.queue_panel(1, {})
    blur[panel[2]].execute()
    assert host.panels_shown[0]["pulldowns"] == {panel[1]: []}
    assert look_knobs(blur) == [] and nuke.allNodes("Group") == []
