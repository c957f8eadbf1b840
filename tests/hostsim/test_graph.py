"""The node graph of the simulated host: selection, contexts, wiring, deletion, handles."""

import pytest

import nuke


def test_select_only_replaces_and_set_selected_adds_and_both_keep_other_groups():
    a, b, c = (nuke.nodes.NoOp() for _ in range(3))
    a.selectOnly()
    b.setSelected(True)
    assert nuke.selectedNodes() == [a, b]
    with nuke.nodes.Group():
        inner = nuke.nodes.Blur()
        inner.selectOnly()
        assert nuke.selectedNodes() == [inner]
    assert nuke.selectedNodes() == [a, b]
    c.selectOnly()
    assert nuke.selectedNodes() == [c] and nuke.selectedNode() is c
    c["selected"].setValue(False)
    assert nuke.selectedNodes() == []


def test_created_nodes_land_in_the_group_context_and_it_is_left_on_errors():
    group = nuke.nodes.Group()
    with group:
        blur = nuke.createNode("Blur", inpanel=False)
        assert nuke.thisGroup() is group and nuke.allNodes() == [blur]
    with pytest.raises(ZeroDivisionError):
        with group:
            1 / 0
    assert nuke.thisGroup() is nuke.root()
    assert group.nodes() == [blur] and blur.fullName() == group.name() + ".Blur1"
    assert nuke.toNode(blur.fullName()) is blur and nuke.toNode("root." + blur.fullName()) is blur
    assert blur not in nuke.allNodes() and blur in nuke.allNodes(recurseGroups=True)
    # end() must match begin().
    first, second = group, nuke.nodes.Group()
    first.begin()
    second.begin()
    with pytest.raises(RuntimeError):
        first.end()
    second.end()
    first.end()
    assert nuke.thisGroup() is nuke.root()


def test_add_knob_appends_remove_knob_refuses_foreign_knobs_and_knobs_is_a_snapshot():
    node, other = nuke.nodes.Blur(), nuke.nodes.Blur()
    tab, button = nuke.Tab_Knob("looks", "looks"), nuke.PyScript_Knob("go", "go")
    assert tab.node() is None
    node.addKnob(tab)
    node.addKnob(button)
    assert node.allKnobs()[-2:] == [tab, button] and button.node() is node
    with pytest.raises(ValueError):
        other.removeKnob(button)
    with pytest.raises(NameError):
        node["no_such_knob"]
    assert node.knob("no_such_knob") is None
    # Removing knobs during a walk over knobs() misses none.
    names = {"looks", "look_preset_1", "go"}
    node.addKnob(nuke.PyScript_Knob("look_preset_1", "1"))
    for name, knob in node.knobs().items():
        if name in names:
            node.removeKnob(knob)
    assert not names & set(node.knobs())


@pytest.mark.parametrize("cls", ["Dot", "Viewer", "Group", "Constant"])
def test_create_node_hooks_below_the_selection_and_only_an_inserting_node_takes_its_outputs(cls):
    read, blur = (nuke.createNode(cls, inpanel=False) for cls in ("CheckerBoard", "Blur"))
    merge = nuke.nodes.Merge2(inputs=[blur, blur])
    viewer = nuke.nodes.Viewer(inputs=[blur])
    blur.selectOnly()
    new = nuke.createNode(cls) if cls == "Dot" else nuke.createNode(cls, inpanel=False)
    assert [merge.input(0), merge.input(1), viewer.input(0)] == [new if cls == "Dot" else blur] * 3
    assert new.input(0) is (blur if cls in ("Dot", "Viewer") else None) and blur.input(0) is read
    assert nuke.selectedNodes() == [new] and new.ypos() > blur.ypos()
    assert new.shown() == (cls == "Dot")


def test_delete_hands_outputs_to_input_zero_and_kills_the_handle():
    read, blur, grade = (nuke.createNode(cls, inpanel=False) for cls in ("Read", "Blur", "Grade"))
    nuke.delete(blur)
    assert grade.input(0) is read
    nuke.delete(read)
    assert grade.inputs() == 0 and grade.input(0) is None


@pytest.mark.parametrize("index, source, why", [
    (1, "constant", "the Dot has one input"),
    (0, "downstream", "it would make a loop"),
    (0, "viewer", "a viewer feeds nothing"),
])
def test_set_input_refuses(index, source, why):
    constant = nuke.nodes.Constant()
    dot = nuke.nodes.Dot(inputs=[constant])
    downstream = nuke.nodes.Blur(inputs=[dot])
    viewer = nuke.nodes.Viewer()
    assert dot.setInput(index, locals()[source]) is False, why


@pytest.mark.parametrize("inside_a_group", [False, True])
@pytest.mark.parametrize("use", [
    lambda node, knob: node.name(),
    lambda node, knob: node["size"],
    lambda node, knob: node.knobs(),
    lambda node, knob: node.setInput(0, None),
    lambda node, knob: knob.value(),
    lambda node, knob: nuke.delete(node),
])
def test_a_dead_handle_raises(use, inside_a_group):
    group = nuke.nodes.Group()
    with (group if inside_a_group else nuke.root()):
        blur = nuke.nodes.Blur()
    knob = blur["label"]
    nuke.delete(group if inside_a_group else blur)
    with pytest.raises(ValueError, match="A PythonObject is not attached to a node"):
        use(blur, knob)


def test_names_are_unique_per_group_and_renames_collide():
    first, second = nuke.nodes.Blur(), nuke.nodes.Blur()
    merge = nuke.nodes.Merge2()
    assert [first.name(), second.name(), merge.name()] == ["Blur1", "Blur2", "Merge1"]
    with pytest.raises(ValueError):
        second["name"].setValue("Blur1")
    merge.setName("Blur1")
    assert merge.name() == "Blur3"
    nuke.delete(first)
    second["name"].setValue("Blur1")
    assert nuke.toNode("Blur1") is second and nuke.toNode("Blur2") is None


def test_create_node_args_set_knobs_and_unknown_classes_are_refused():
    node = nuke.createNode("Blur", "size 3.5 label {two words} disable true", inpanel=False)
    assert (node["size"].value(), node["label"].value(), node["disable"].value()) == \
        (3.5, "two words", True)
    with pytest.raises(RuntimeError, match="Frobnicate: Unknown command"):
        nuke.createNode("Frobnicate")


def test_positions_take_whole_numbers_only():
    node = nuke.nodes.Dot()
    node.setXYpos(10, -20)
    node["xpos"].setValue(15.7)
    assert (node.xpos(), node.ypos(), node["xpos"].getValue()) == (15, -20, 15.0)
    with pytest.raises(TypeError):
        node.setXYpos(1.5, 2)
