"""Where the host is strict: dependencies(), evaluated text knobs, selectedNode(), menu arguments,
menu commands as undo steps, and the operating system's clipboard."""

import contextlib

import pytest
from cobaltRig.qt import QtWidgets

import hostctl
import nuke


@pytest.mark.parametrize("what, hidden, expected", [
    (None, False, ["source", "key"]),
    (nuke.INPUTS, False, ["source"]),
    (nuke.HIDDEN_INPUTS, False, []),
    (nuke.HIDDEN_INPUTS, True, ["source"]),
    (nuke.EXPRESSIONS, False, ["key"]),
])
def test_dependencies_follow_the_what_flags_and_by_default_all_links(what, hidden, expected):
    source, key = nuke.nodes.Constant(), nuke.nodes.Grade()
    merge = nuke.nodes.Merge2(hide_input=hidden)
    assert merge.setInput(1, source) and merge.inputs() == 2 and merge.input(0) is None
    merge["mix"].setExpression("Grade1.mix")
    found = merge.dependencies() if what is None else merge.dependencies(what)
    assert found == [{"source": source, "key": key}[name] for name in expected]
    assert source.dependent() == [merge]


@pytest.mark.parametrize("link", [
    lambda node: node["label"].setValue("[value Blur1.name]"),
    lambda node: node["label"].setValue("[knob Blur1.mix]"),
    lambda node: node["white"].setExpression("Blur1.mix", 2),
    lambda node: node["mix"].setExpression("parent.Blur1.mix"),
])
def test_expressions_and_label_commands_link_nodes_both_ways(link):
    other, node = nuke.nodes.Blur(), nuke.nodes.Grade()
    link(node)
    assert node.dependencies() == [other] and node.dependencies(nuke.INPUTS) == []
    assert other.dependent() == [node] and other.dependent(nuke.INPUTS) == []
    node.selectOnly()
    nuke.nodeCopy("%clipboard%")
    assert nuke.nodePaste("%clipboard%").dependencies(nuke.EXPRESSIONS) == [other]


@pytest.mark.parametrize("typed, shown", [
    ("[value name] v2", "Grade1 v2"),
    ("[value Blur1.mix] and [knob Blur1.size]", "0.25 and {3 4}"),
    ("mix [value mix]", "mix 1"),
    ("[frame] \\[value name]", "[frame] \\[value name]"),   # unknown and escaped stay as typed
    ("[value NoSuchNode.mix]", "[value NoSuchNode.mix]"),
    ("[value label]", None),                                 # shows itself: must not hang
])
def test_string_knobs_give_their_text_evaluated_and_as_typed(typed, shown):
    nuke.nodes.Blur(mix=0.25, size=[3, 4])
    node = nuke.nodes.Grade(label=typed)
    label = node["label"]
    if shown is not None:
        assert label.value() == label.getValue() == label.evaluate() == shown
    assert label.getText() == label.toScript() == typed
    node.addKnob(nuke.PyScript_Knob("code", "code", typed))
    assert node["code"].value() == typed   # code is never evaluated


def test_selected_node_is_an_output_of_the_highest_selected_level_else_the_pointed_one():
    group = nuke.nodes.Group()
    with group:
        inner = nuke.nodes.Blur(selected=True)
    assert nuke.selectedNode() is inner   # nothing selected at the top: found in the group
    read = nuke.nodes.Constant()
    below = nuke.nodes.Grade(inputs=[read], selected=True)
    read.setSelected(True)   # selected last, but it feeds a selected node
    with group:
        assert nuke.selectedNode() is below
    for node in (inner, below, read):
        node.setSelected(False)
    with pytest.raises(ValueError, match="No node selected"):
        nuke.selectedNode()
    hostctl.set_node_under_pointer(read)
    assert nuke.selectedNode() is read


def test_menu_arguments_after_the_name_go_by_keyword():
    menu = nuke.menu("Nodes")
    with pytest.raises(TypeError):
        menu.addMenu("Tools", "tools.png")
    sub = menu.addMenu("Tools", icon="tools.png", tooltip="tips", index=0)
    assert menu.items()[0] is sub and sub.icon() == "tools.png"
    with pytest.raises(TypeError):
        sub.addSeparator(0)
    menu.removeItem("Tools")
    assert menu.findItem("Tools") is None and nuke.menu("Nope") is None


def fails():
    nuke.nodes.Blur()
    nuke.nodes.Grade()
    raise RuntimeError("half way")


@pytest.mark.parametrize("command, name", [
    ("for c in ('Blur', 'Grade', 'NoOp'): nuke.createNode(c, inpanel=False)", "entry"),
    ("with nuke.Undo('Named'):\n    nuke.nodes.Blur()\nnuke.nodes.Grade()", "Named"),
    (fails, "entry"),
])
def test_a_menu_command_is_one_undo_step_even_when_it_fails(command, name):
    item = nuke.menu("Nodes").addCommand("entry", command)
    with contextlib.suppress(RuntimeError):
        item.invoke()
    assert nuke.Undo.undoSize() == 1 and nuke.Undo.undoDescribe() == name
    nuke.undo()
    assert nuke.allNodes() == []
    nuke.menu("Nodes").removeItem("entry")


def test_the_clipboard_is_the_operating_systems():
    clipboard = QtWidgets.QApplication.clipboard()
    nuke.nodes.Blur(mix=0.5).selectOnly()
    assert nuke.nodeCopy("%clipboard%") and "Blur {" in clipboard.text()
    text = clipboard.text()
    nuke.scriptClear()
    assert clipboard.text() == text          # a new script leaves the clipboard alone
    assert nuke.nodePaste("%clipboard%")["mix"].value() == 0.5
    clipboard.setText("Grade {\n name FromElsewhere\n}\n")
    assert nuke.nodePaste("%clipboard%").name() == "FromElsewhere"
    clipboard.clear()
    assert nuke.nodePaste("%clipboard%") is None
