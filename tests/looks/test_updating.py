"""Overwriting and removing a look through the host's panels."""

import pytest

from looks_testing import look_knobs, store, stored_copies, with_looks

UPDATE = ("Update preset", "Select a preset to update", "look_update")
DELETE = ("Delete preset", "Select a preset to delete", "look_delete")


@pytest.fixture
def blur_with_looks(rig, nuke, chain):
    """Blur1 with looks 1, 2 and 10, mix 1.0, 0.2 and 0.3 respectively."""
    blur = with_looks(nuke, chain[1], (1.0, 0.2) + (0.3,) * 8)
    for index in range(3, 10):
        blur.removeKnob(blur["look_preset_{}".format(index)])
    return blur


@pytest.mark.parametrize("panel", [UPDATE, DELETE])
def test_cancelling_changes_nothing_and_a_node_without_looks_is_offered_none(
        rig, nuke, host, blur_with_looks, panel):
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

    grade = nuke.toNode("Grade1")
    rig.create_looks_widgets(grade)
    host.queue_panel(1, {})
    grade[button].execute()
    assert host.panels_shown[1]["pulldowns"] == {pulldown: []} and look_knobs(grade) == []
    assert stored_copies(nuke) == copies and len(nuke.allNodes("Group")) == 1


def test_update_keeps_the_uid_and_delete_leaves_the_gap(rig, nuke, host, blur_with_looks):
    blur = rig.apply_preset(blur_with_looks, blur_with_looks["look_preset_1"].tooltip(), "1")
    # Applying rebuilds the look buttons in text order, each still calling its own look.
    assert look_knobs(blur) == ["look_preset_1", "look_preset_10", "look_preset_2"]
    for name in look_knobs(blur):
        index = name.rsplit("_", 1)[1]
        assert blur[name].label() == index
        assert blur[name].command().endswith("'{}', '{}')".format(blur[name].tooltip(), index))
    uid, command = blur["look_preset_2"].tooltip(), blur["look_preset_2"].command()
    blur["mix"].setValue(0.9)
    host.queue_panel(1, {UPDATE[1]: "2"})

    blur["look_update"].execute()

    assert blur["look_preset_2"].tooltip() == uid and blur["look_preset_2"].command() == command
    assert blur["looks"].tooltip() == "1"
    copy = stored_copies(nuke)[uid]
    assert copy["mix"].value() == 0.9 and look_knobs(copy) == []
    assert len(stored_copies(nuke)) == 10
    blur["look_preset_2"].execute()
    blur = nuke.toNode("Blur1")
    assert blur["mix"].value() == 0.9

    uid = blur["look_preset_10"].tooltip()
    host.queue_panel(1, {DELETE[1]: "10"})
    blur["look_delete"].execute()
    assert look_knobs(blur) == ["look_preset_1", "look_preset_2"]
    assert uid not in stored_copies(nuke) and len(stored_copies(nuke)) == 9
    assert blur.knob("looks") is not None and host.messages == []
    store(blur)
    assert look_knobs(blur)[-1] == "look_preset_3"
