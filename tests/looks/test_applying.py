"""Applying a look: the node is replaced by its stored copy and the graph doesn't notice."""

import pytest
from cobaltRig import helper

from looks_testing import look_knobs, store, stored_copies


def press(nuke, name, knob):
    """Presses a button of the node of that name; gives the node of that name afterwards."""
    nuke.toNode(name)[knob].execute()
    return nuke.toNode(name)


def test_a_look_button_replaces_the_node_keeping_what_the_graph_sees(rig, nuke, chain, host):
    source, blur, grade = chain
    merge = nuke.nodes.Merge2(inputs=[source, blur])
    blur["label"].setValue("soft")
    store(blur)
    blur["mix"].setValue(0.5)
    store(blur)
    for i, node in enumerate((source, blur, grade, merge)):  # far out, beyond 32 bits
        node.setXYpos(3 * 10 ** 9 + 100 * i, -3 * 10 ** 9)
    blur["label"].setValue("soft, edited")
    blur["mix"].setValue(0.75)
    blur.showControlPanel()
    uids = [blur[k].tooltip() for k in look_knobs(blur)]

    new = press(nuke, "Blur1", "look_preset_1")

    assert new is not blur and new.name() == "Blur1"
    with pytest.raises(ValueError):
        blur.name()
    assert new["mix"].value() == 1.0                # the stored state, edits since are gone
    assert new["label"].value() == "soft, edited"   # ... but not the label
    assert (new.xpos(), new.ypos()) == (3 * 10 ** 9 + 100, -3 * 10 ** 9)
    assert new.input(0) is source and grade.input(0) is new and merge.input(1) is new
    assert new.shown()
    assert [new[k].tooltip() for k in look_knobs(new)] == uids  # the later look is kept too
    assert new["looks"].tooltip() == "1"
    assert nuke.allNodes("Dot") == [] and host.messages == []
    assert stored_copies(nuke)[uids[0]]["label"].value() == uids[0]

    new.hideControlPanel()
    again = press(nuke, "Blur1", "look_preset_2")
    assert again["mix"].value() == 0.5 and again["looks"].tooltip() == "2"
    assert again.input(0) is source and grade.input(0) is again
    assert not again.shown()  # a panel that was closed stays closed


@pytest.mark.parametrize("gone, messages", [("copy", ["cannot find preset node"]),
                                           ("container", [])])
def test_a_missing_copy_or_container_leaves_the_node(rig, nuke, chain, host, gone, messages):
    _, blur, grade = chain
    store(blur)
    container = nuke.allNodes("Group")[0]
    if gone == "copy":
        with container:
            for copy in container.nodes():
                nuke.delete(copy)
    else:
        nuke.delete(container)
    grade.selectOnly()

    assert rig.apply_preset(blur, blur["look_preset_1"].tooltip(), "1") is None
    assert host.messages == messages and nuke.selectedNodes() == [blur]
    assert nuke.toNode("Blur1") is blur and grade.input(0) is blur
    assert nuke.allNodes("Dot") == []


def test_a_node_without_look_tab_takes_its_look_all_the_same(rig, nuke, chain, host):
    # A class that gets no look tab but is not in the ignore list still stores looks; applying
    # one must not fail once the node has been replaced.
    source, _, _ = chain
    helper.update_xml("presetnodes_ignore", "Dot")
    viewer = nuke.nodes.Viewer(inputs=[source])
    viewer["downrez"].setValue("3.0")
    rig.set_look(viewer)
    viewer["downrez"].setValue("1.0")

    new = press(nuke, viewer.name(), "look_preset_1")

    assert new is not viewer and new.knob("looks") is None
    assert new["downrez"].getValue() == 3.0 and new.input(0) is source
    assert look_knobs(new) == ["look_preset_1"] and host.messages == []
