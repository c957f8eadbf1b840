"""Looks leave the rest of the artist's work alone: every input on its own number, every output,
a label typed with [commands], expressions that name other nodes, and the clipboard."""

import pytest

from looks_testing import look_knobs, store

ARTIST_COPY = "set cut_paste_input [stack 0]\nNoOp {\n name FromTheArtist\n}\n"
UPDATE = "Select a preset to update"


def merge_wired(*wired):
    """A Merge2 fed on these input numbers only, each by a node of its own."""
    return lambda nuke: nuke.nodes.Merge2(
        inputs=[nuke.nodes.Constant() if i in wired else None for i in range(3)])


def expression_on_another_node(nuke):
    source, key = nuke.nodes.Constant(), nuke.nodes.Grade()
    blur = nuke.nodes.Blur(inputs=[source])
    blur["mix"].setExpression("{}.mix".format(key.name()))
    return blur


def label_with_a_command(nuke):
    grade = nuke.nodes.Grade(inputs=[nuke.nodes.Constant()])
    grade["label"].setValue("[value name] v2")
    return grade


def connections(nuke):
    """Every connection of the top level, by node name and input number."""
    return sorted((node.name(), i, node.input(i).name()) for node in nuke.allNodes()
                  for i in range(node.inputs()) if node.input(i) is not None)


@pytest.mark.parametrize("make", [
    merge_wired(1), merge_wired(0, 1), merge_wired(0, 2), merge_wired(2),
    expression_on_another_node, label_with_a_command,
], ids=["B", "A and B", "A and mask", "mask", "expression", "label"])
def test_apply_update_and_undo_keep_connections_label_and_clipboard(rig, nuke, host, make):
    node = make(nuke)
    name, raw = node.name(), {k: node[k].toScript() for k in ("label", "mix")}
    nuke.nodes.NoOp(inputs=[node])
    nuke.nodes.Viewer(inputs=[node])
    host.set_clipboard(ARTIST_COPY)
    store(node)
    wired, script = connections(nuke), host.script_text()

    new = rig.apply_preset(node, node["look_preset_1"].tooltip(), "1")

    assert connections(nuke) == wired and new.name() == name
    assert {k: new[k].toScript() for k in raw} == raw
    assert new["label"].value() == raw["label"].replace("[value name]", name)
    assert host.clipboard() == ARTIST_COPY
    nuke.undo()
    assert host.script_text() == script

    node = nuke.toNode(name)
    host.queue_panel(1, {UPDATE: "1"})
    node["look_update"].execute()
    node = rig.apply_preset(node, node["look_preset_1"].tooltip(), "1")
    assert connections(nuke) == wired and {k: node[k].toScript() for k in raw} == raw
    assert host.clipboard() == ARTIST_COPY
    nuke.undo()
    nuke.undo()
    assert host.script_text() == script


def test_no_look_operation_touches_the_clipboard(rig, nuke, host, chain):
    _, blur, grade = chain
    host.set_clipboard(ARTIST_COPY)
    store(blur)
    blur.selectOnly()
    grade.setSelected(True)
    rig.batch_set_look()
    # The selection is taken at the start: storing one node does not lose the next.
    assert len(look_knobs(blur)) == 2 and look_knobs(grade) == ["look_preset_1"]
    assert nuke.selectedNodes() == [grade]
    blur = rig.apply_preset(blur, blur["look_preset_1"].tooltip(), "1")
    for button, panel in (("look_update", UPDATE), ("look_delete", "Select a preset to delete")):
        host.queue_panel(1, {panel: "2"})
        blur[button].execute()
    rig.delete_selected_nodes_looks()
    assert host.clipboard() == ARTIST_COPY and host.messages == []


def test_storing_counts_the_looks_of_the_node_it_stores(rig, nuke, chain):
    _, blur, _ = chain
    for _ in range(3):
        store(blur)
    group = nuke.nodes.Group()
    with group:
        inner = nuke.nodes.Grade()
    blur.selectOnly()   # the top-level selection is what selectedNode() gives

    rig.set_look(inner)

    assert look_knobs(inner) == ["look_preset_1"] and len(look_knobs(blur)) == 3

