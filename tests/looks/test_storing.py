"""Storing looks: the container, the stored copies and the look knobs."""

import pytest
from cobaltRig import helper

from looks_testing import look_knobs, store, stored_copies


@pytest.mark.parametrize("artist_node, name", [(None, "looks"), ("NoOp", "looks1")])
def test_first_and_second_store_make_knobs_copies_and_one_container(rig, nuke, chain, host,
                                                                    artist_node, name):
    _, blur, _ = chain
    if artist_node:  # the artist's own node already goes by the container's name
        nuke.createNode(artist_node, "name looks", inpanel=False)
    blur["label"].setValue("artist's label")
    store(blur)
    blur["mix"].setValue(0.25)
    store(blur)

    names = [k.name() for k in blur.allKnobs()]
    assert names[names.index("looks"):][-2:] == ["look_preset_1", "look_preset_2"]
    first, second = blur["look_preset_1"], blur["look_preset_2"]
    assert (first.label(), second.label()) == ("1", "2")
    assert first.tooltip() != second.tooltip()
    assert blur["label"].value() == "artist's label" and blur["looks"].tooltip() == ""

    [container] = [n for n in nuke.allNodes("Group")]
    assert container.name() == name and nuke.toNode("looks").Class() == (artist_node or "Group")
    assert container["tile_color"].value() == 0x089AFDFF
    assert [k.name() for k in container.allKnobs()][-3:] == ["looks", "notice", "looks_group"]
    assert container["notice"].value() == "looks container. Don't delete this node"
    assert not container["looks_group"].visible()

    copies = stored_copies(nuke)
    assert set(copies) == {first.tooltip(), second.tooltip()}
    assert copies[first.tooltip()]["mix"].value() == 1.0
    assert copies[second.tooltip()]["mix"].value() == 0.25
    for copy in copies.values():
        assert copy.inputs() == 0 and look_knobs(copy) == []
        assert copy.knob("look_new") is not None  # the look widgets travel with the copy
    blur["look_preset_1"].execute()  # the container is found by its knob, whatever its name
    assert nuke.toNode("Blur1")["mix"].value() == 1.0 and host.messages == []


def test_nodes_of_different_classes_share_the_container_and_count_their_own(rig, nuke, chain):
    _, blur, grade = chain
    merge = nuke.nodes.Merge2(inputs=[blur, None, grade])
    for node in (blur, grade, blur, merge):
        store(node)
    assert look_knobs(blur) == ["look_preset_1", "look_preset_2"]
    assert look_knobs(grade) == look_knobs(merge) == ["look_preset_1"]
    assert len(nuke.allNodes("Group")) == 1 and len(stored_copies(nuke)) == 4
    # Every input is cut in the copies, and kept on the nodes.
    assert [copy.inputs() for copy in stored_copies(nuke).values()] == [0] * 4
    assert merge.dependencies() == [blur, grade]


@pytest.mark.parametrize("ignore, stored", [
    ("", True),            # one empty entry refuses nothing
    ("Blur", False),
    ("Grade,Blur", False),
    ("Grade, Blur", True),  # entries are not stripped
])
def test_ignore_list_is_split_at_commas_only(rig, nuke, chain, ignore, stored):
    _, blur, grade = chain
    helper.update_xml("presetnodes_ignore", ignore)
    grade.selectOnly()
    rig.set_look(blur)
    assert bool(look_knobs(blur)) == stored
    if not stored:  # nothing at all happened, the selection included
        assert nuke.selectedNodes() == [grade] and blur.knob("looks") is None
        assert nuke.allNodes("Group") == []

