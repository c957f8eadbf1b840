"""Undo and redo: one step per command or knob change, groups, and what undo brings back."""

import os

import pytest

import hostctl
import nuke

CLIP = "%clipboard%"
# A script artists published, shared by the team beside the repository.
PUBLISHED = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "..", "shared",
                         "corpus", "nst", "NukeSurvivalToolkit", "nk_files", "C4x4.nk")


def small_graph():
    """Read -> Grade -> Blur, a Viewer on the Blur, and a Group holding a Dot; the Grade selected
    and carrying a knob of the user's, the Blur's size an expression."""
    read = nuke.nodes.Read(file="/plates/a.exr")
    grade = nuke.nodes.Grade(inputs=[read])
    grade.addKnob(nuke.String_Knob("note", "note", "warm"))
    blur = nuke.nodes.Blur(inputs=[grade])
    blur["size"].setExpression("frame / 10")
    nuke.nodes.Viewer(inputs=[blur])
    group = nuke.nodes.Group()
    with group:
        nuke.nodes.Dot()
    grade.selectOnly()
    return read, grade, blur, group


def work_inside_a_group(nodes):
    with nodes[3]:
        nuke.createNode("Blur", inpanel=False)


def several_commands_in_a_with_block(nodes):
    with nuke.Undo("look"):
        nuke.delete(nodes[1])
        node = nuke.nodes.Grade(name="Grade1", inputs=[nodes[0]])
        nodes[2].setInput(0, node)
        node["multiply"].setValue(0.5)
        node.selectOnly()


# Each command gets nodes = (read, grade, blur, group) of small_graph().
COMMANDS = {
    "create below selection": lambda nodes: nuke.createNode("Transform", inpanel=False),
    "make unconnected": lambda nodes: nuke.nodes.Constant(color=0.5),
    "delete in the middle": lambda nodes: nuke.delete(nodes[1]),
    "paste onto selection": lambda nodes: (nuke.nodeCopy(CLIP), nuke.nodePaste(CLIP)),
    "paste a published script": lambda nodes: nuke.nodePaste(PUBLISHED),
    "rewire": lambda nodes: nodes[2].setInput(0, nodes[0]),
    "set array knob at one index": lambda nodes: nodes[1]["white"].setValue(2.0, 1),
    "set a value over an expression": lambda nodes: nodes[2]["size"].setValue(3),
    "rename": lambda nodes: nodes[1].setName("warm"),
    "move": lambda nodes: nodes[2].setXYpos(500, 700),
    "add user knob": lambda nodes: nodes[1].addKnob(nuke.Tab_Knob("looks", "looks")),
    "remove a knob": lambda nodes: nodes[1].removeKnob(nodes[1]["note"]),
    "hide a knob": lambda nodes: nodes[1]["note"].setVisible(False),
    "make group of selection": lambda nodes: nuke.makeGroup(show=False),
    "work inside a group": work_inside_a_group,
    "several commands in a with block": several_commands_in_a_with_block,
}


@pytest.mark.parametrize("command", COMMANDS)
def test_one_undo_restores_the_script_before_and_one_redo_the_script_after(command):
    nodes = small_graph()
    nuke.Undo.undoTruncate()
    before = hostctl.script_text()
    COMMANDS[command](nodes)
    after = hostctl.script_text()
    assert after != before and nuke.Undo.undoSize() == 1
    nuke.undo()
    assert hostctl.script_text() == before
    nuke.redo()
    assert hostctl.script_text() == after
    nuke.undo()
    assert hostctl.script_text() == before


def test_handles_of_nodes_that_come_back_work_again():
    read = nuke.nodes.Read()
    blur = nuke.nodes.Blur(inputs=[read])
    knob = blur["size"]
    nuke.delete(blur)
    with pytest.raises(ValueError):
        blur.name()
    nuke.undo()
    assert blur.input(0) is read and knob.node() is blur and nuke.allNodes() == [read, blur]
    knob.setValue(3)
    nuke.undo()
    nuke.undo()
    assert nuke.allNodes() == [read]
    with pytest.raises(ValueError):
        knob.value()
    nuke.redo()
    assert nuke.allNodes()[-1] is blur and blur.name() == "Blur1"


@pytest.mark.parametrize("instance_only", [False, True])
def test_nested_groups_make_one_step_when_the_outermost_ends_and_a_failing_one_too(instance_only):
    # Older hosts take undo groups only on an instance: that form works in every version.
    hostctl.set_undo_instance_only(instance_only)
    undo = nuke.Undo()
    undo.begin("outer")
    nuke.nodes.Blur()
    with nuke.Undo():
        nuke.nodes.Grade()
    assert undo.undoSize() == 0
    nuke.nodes.Dot()
    undo.end()
    assert undo.undoSize() == 1 and undo.undoDescribe() == "outer"
    nuke.undo()
    assert nuke.allNodes() == [] and undo.redoDescribe() == "outer"
    with pytest.raises(ZeroDivisionError):
        with nuke.Undo("half"):
            nuke.nodes.Blur()
            1 / 0
    assert [n.name() for n in nuke.allNodes()] == ["Blur1"] and undo.undoSize() == 1
    nuke.undo()
    assert nuke.allNodes() == []
    if instance_only:
        with pytest.raises(TypeError):
            nuke.Undo.begin("class level")
    else:
        nuke.Undo.begin("class level")
        nuke.Undo.end()


def test_cancel_takes_back_the_open_group_and_what_is_done_while_disabled_stays_out_of_undo():
    keep = nuke.nodes.NoOp()
    nuke.Undo.begin()
    keep.setName("kept")
    nuke.nodes.Blur()
    nuke.Undo.cancel()
    assert nuke.allNodes() == [keep] and keep.name() == "NoOp1"
    nuke.Undo.disable()
    nuke.nodes.Grade()
    assert nuke.Undo.disabled()
    nuke.Undo.enable()
    assert nuke.Undo.undoSize() == 1 and not nuke.Undo.disabled()
    # A change made while disabled stays when the step before it is undone.
    keep["label"].setValue("a step")
    nuke.Undo.disable()
    nuke.toNode("Grade1")["mix"].setValue(0.25)
    nuke.Undo.enable()
    nuke.undo()
    assert keep["label"].value() == "" and nuke.toNode("Grade1")["mix"].value() == 0.25


def test_a_new_step_drops_the_redo_list_and_a_new_script_the_history():
    nuke.nodes.Blur()
    nuke.nodes.Grade()
    nuke.undo()
    # Selecting and setting a value unchanged are no steps: the redo list stays.
    nuke.toNode("Blur1").selectOnly()
    nuke.toNode("Blur1")["label"].setValue("")
    assert nuke.Undo.redoSize() == 1 and nuke.Undo.undoSize() == 1
    nuke.nodes.Dot()
    assert nuke.Undo.redoSize() == 0 and nuke.Undo.undoSize() == 2
    nuke.redo()
    assert [n.Class() for n in nuke.allNodes()] == ["Blur", "Dot"]
    nuke.scriptClear()
    assert nuke.Undo.undoSize() == 0
    nuke.undo()
    assert nuke.allNodes() == []
