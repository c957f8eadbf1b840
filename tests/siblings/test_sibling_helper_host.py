"""The helpers that ask the host's graph."""

import pytest

from cobaltRig import helper


def look_container(nuke):
    container = nuke.nodes.Group(name="looks")
    container.addKnob(nuke.Text_Knob("looks_group", ""))
    return container


def test_find_looks_group_finds_the_container_of_the_context_and_makes_none(nuke):
    decoy = nuke.nodes.Blur()
    decoy.addKnob(nuke.Text_Knob("looks_group", ""))
    shot = nuke.nodes.Group()
    assert helper.find_looks_group() is False
    container = look_container(nuke)
    assert helper.find_looks_group() is container and len(nuke.allNodes()) == 3
    # Every graph level has its own container: by context, or by the group holding a node.
    with shot:
        inner = nuke.nodes.Blur()
        assert helper.find_looks_group() is False
    assert helper.find_looks_group(inner) is False and helper.find_looks_group(decoy) is container


def test_topleft_lies_above_the_graph_and_ignores_the_container(nuke):
    assert helper.get_topleft_coordinates() == (0, 0)
    nuke.nodes.Blur().setXYpos(100, -40)
    nuke.nodes.Grade().setXYpos(-250, 300)
    look_container(nuke).setXYpos(-9000, -9000)
    x, y = helper.get_topleft_coordinates()
    assert x == -250 and y < -40 and isinstance(y, int)


@pytest.mark.parametrize("downrez, expected", [("1", "0.0"), ("4", "2.0"), ("32", "5.0"), (None, None)])
def test_resolution_is_the_active_viewers_downrez_index_as_float_text(nuke, downrez, expected):
    if downrez is not None:
        nuke.nodes.Viewer()["downrez"].setValue(downrez)
    assert helper.get_resolution() == expected


def test_connected_nodes_are_everything_upstream_once(nuke):
    read1, read2 = nuke.nodes.Read(), nuke.nodes.Read()
    grade = nuke.nodes.Grade(inputs=[read1])
    merge = nuke.nodes.Merge2(inputs=[grade, None, read2])
    top = nuke.nodes.Merge2(inputs=[merge, read1])
    upstream = helper.get_connected_nodes(top)
    assert sorted(n.name() for n in upstream) == ["Grade1", "Merge1", "Read1", "Read2"]
    assert helper.get_connected_nodes(read1) == []
