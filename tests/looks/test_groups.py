"""Looks of nodes inside Groups: every operation finds the container in the node's own group."""

import pytest
from cobaltRig import helper
from cobaltRig.qt import QtCore

from looks_testing import chain_in, look_knobs, nested_group, press, select, store, with_looks

PANELS = {"look_update": "Select a preset to update", "look_delete": "Select a preset to delete"}


def containers(nuke, group):
    return [n for n in nuke.allNodes("Group", group=group) if n.knob("looks_group")]


def copies_in(container):
    return sorted(n["label"].value() for n in container.nodes())


@pytest.fixture
def root_looks(rig, nuke):
    """A node with a look at the root, so a container stands there too and must not be taken."""
    node = with_looks(nuke, nuke.createNode("Blur", inpanel=False), (0.7,))
    [container] = containers(nuke, nuke.root())
    return copies_in(container)


@pytest.mark.parametrize("depth", [1, 2])
@pytest.mark.parametrize("button", ["look_preset_1", "look_update", "look_delete"])
def test_store_apply_update_and_delete_inside_groups(rig, nuke, host, root_looks, depth, button):
    group = nested_group(nuke, depth)
    source, blur, grade = chain_in(nuke, group)
    with_looks(nuke, blur, (0.1, 0.2))
    uids = [blur[k].tooltip() for k in look_knobs(blur)]
    blur["mix"].setValue(0.5)

    [container] = containers(nuke, group)
    assert copies_in(container) == sorted(uids)
    # The sibling API and the compiled lookup give the same node, from anywhere.
    assert helper.find_looks_group(blur) is container
    assert rig.get_look_container(blur) is container
    with group:
        assert helper.find_looks_group() is container
    assert helper.find_looks_group() is containers(nuke, nuke.root())[0]
    if button in PANELS:
        host.queue_panel(1, {PANELS[button]: "1"})

    blur[button].execute()

    if button == "look_preset_1":
        new = group.node("Blur1")
        assert new is not blur and new["mix"].value() == 0.1 and new["looks"].tooltip() == "1"
        assert new.input(0) is source and grade.input(0) is new
        assert nuke.allNodes("Dot", group=group) == []
    elif button == "look_update":
        assert copies_in(container) == sorted(uids)
        blur["look_preset_1"].execute()
        assert group.node("Blur1")["mix"].value() == 0.5
    else:
        assert copies_in(container) == [uids[1]] and look_knobs(blur) == ["look_preset_2"]
    assert containers(nuke, group) == [container] and host.messages == []
    assert copies_in(containers(nuke, nuke.root())[0]) == root_looks


def test_the_slider_steps_a_selection_across_groups(rig, nuke, root_looks, open_slider, qtbot):
    inner, outer = nested_group(nuke, 2), nuke.toNode("Group1")
    nodes = [with_looks(nuke, chain_in(nuke, group)[1], (0.1, 0.2))
             for group in (nuke.root(), outer, inner)]
    grade = with_looks(nuke, nuke.createNode("Grade", inpanel=False), (0.5,))
    grade["mix"].setValue(0.6)
    for node in nodes:
        node.selectOnly()  # each in its own group; the others keep theirs
    select(*nodes, grade)
    sizes = [len(containers(nuke, g)[0].nodes()) for g in (nuke.root(), outer, inner)]

    window = open_slider()
    assert window.slider.maximum() == 2
    press(qtbot, window, QtCore.Qt.Key_Right)

    paths = ("Blur2", "Group1.Blur1", "Group1.Group2.Blur1")
    stepped = [nuke.toNode("root." + path) for path in paths]
    assert all(n is not old and n["mix"].value() == 0.2 and n.isSelected()
               for n, old in zip(stepped, nodes))
    assert window.input_look.text() == "2"
    # Grade has no look 2: it is passed over, keeps its edit and drops out of the selection.
    assert nuke.selectedNodes() == [stepped[0]] and grade["mix"].value() == 0.6
    press(qtbot, window, QtCore.Qt.Key_Left)
    assert [nuke.toNode("root." + p)["mix"].value() for p in paths] == [0.1] * 3
    assert nuke.toNode(grade.name()) is grade and grade["mix"].value() == 0.6
    # Stepping neither adds to the containers nor leaves their copies selected.
    assert [len(containers(nuke, g)[0].nodes()) for g in (nuke.root(), outer, inner)] == sizes
    assert not any(n.isSelected() for g in (nuke.root(), outer, inner)
                   for n in containers(nuke, g)[0].nodes())


def test_a_replaced_lookup_serves_storing_and_applying_alike(rig, nuke, chain, host,
                                                             monkeypatch):
    _, blur, _ = chain
    shelf = nuke.nodes.Group(name="shelf")  # a studio's own container, found its own way
    monkeypatch.setattr(helper, "find_looks_group", lambda: shelf)
    store(blur)
    uid = blur["look_preset_1"].tooltip()
    blur["mix"].setValue(0.3)

    blur["look_preset_1"].execute()

    assert [n["label"].value() for n in shelf.nodes()] == [uid]
    assert nuke.toNode("Blur1")["mix"].value() == 1.0 and host.messages == []
    assert containers(nuke, nuke.root()) == []
