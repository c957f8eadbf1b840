"""Where the host is strict: what dependencies() lists, evaluated text knobs, the node selectedNode()
gives, menu arguments by keyword, menu commands as undo steps, both forms of Undo, and the
operating system's clipboard."""

import pytest
from cobaltRig.qt import QtWidgets

import hostctl
import nuke

pytestmark = pytest.mark.usefixtures("host")

CLIP = "%clipboard%"


# -- dependencies ----------------------------------------------------------------------------------


@pytest.fixture
def linked():
    """A Merge fed only on A, whose mix follows a Grade that feeds nothing."""
    source, grade = nuke.nodes.Constant(), nuke.nodes.Grade()
    merge = nuke.nodes.Merge2()
    merge.setInput(1, source)
    merge["mix"].setExpression("{}.mix".format(grade.name()))
    return source, grade, merge


@pytest.mark.parametrize("what, expected", [
    (None, ["source", "grade"]),
    (nuke.INPUTS, ["source"]),
    (nuke.HIDDEN_INPUTS, []),
    (nuke.EXPRESSIONS, ["grade"]),
    (nuke.INPUTS | nuke.EXPRESSIONS, ["source", "grade"]),
])
def test_dependencies_follow_the_what_flags_and_by_default_all_links(linked, what, expected):
    source, grade, merge = linked
    found = merge.dependencies() if what is None else merge.dependencies(what)
    assert found == [{"source": source, "grade": grade}[name] for name in expected]
    assert merge.inputs() == 2 and merge.input(0) is None


def test_hidden_inputs_count_only_for_hidden_inputs(linked):
    source, _, merge = linked
    merge["hide_input"].setValue(True)
    assert merge.dependencies(nuke.INPUTS) == []
    assert merge.dependencies(nuke.HIDDEN_INPUTS) == [source]


@pytest.mark.parametrize("make_link", [
    lambda node, other: node["label"].setValue("[value {}.name]".format(other.name())),
    lambda node, other: node["label"].setValue("[knob {}.mix]".format(other.name())),
    lambda node, other: node["white"].setExpression("{}.mix".format(other.name()), 2),
    lambda node, other: node["mix"].setExpression("parent.{}.mix".format(other.name())),
])
def test_expressions_and_label_commands_link_nodes_both_ways(make_link):
    other, node = nuke.nodes.Blur(), nuke.nodes.Grade()
    make_link(node, other)
    assert node.dependencies() == [other] and node.dependencies(nuke.INPUTS) == []
    assert other.dependent() == [node] and other.dependent(nuke.INPUTS) == []


def test_an_expression_link_survives_copy_paste_and_undo():
    grade, blur = nuke.nodes.Grade(), nuke.nodes.Blur()
    blur["mix"].setExpression("Grade1.mix")
    blur.selectOnly()
    nuke.nodeCopy(CLIP)
    twin = nuke.nodePaste(CLIP)
    assert twin.dependencies() == [blur, grade] and twin["mix"].toScript() == "{{Grade1.mix}}"
    blur["mix"].setValue(0.5)
    assert blur.dependencies() == []
    nuke.undo()
    assert blur.dependencies() == [grade] and blur["mix"].hasExpression()


# -- text knobs ------------------------------------------------------------------------------------


@pytest.mark.parametrize("typed, shown", [
    ("[value name] v2", "Grade1 v2"),
    ("[value Blur1.mix] and [knob Blur1.size]", "0.25 and {3 4}"),
    ("mix [value mix]", "mix 1"),
    ("[frame] \\[value name]", "[frame] \\[value name]"),   # unknown and escaped stay as typed
    ("[value NoSuchNode.mix]", "[value NoSuchNode.mix]"),
    ("[value label]", None),                                 # shows itself: never ends, not a hang
])
def test_string_knobs_give_their_text_evaluated_and_as_typed(typed, shown):
    blur = nuke.nodes.Blur(mix=0.25)
    blur["size"].setValue([3, 4])
    label = nuke.nodes.Grade()["label"]
    label.setValue(typed)
    if shown is not None:
        assert label.value() == label.getValue() == shown
    assert label.getText() == label.toScript() == typed


def test_an_evaluated_label_follows_a_rename_and_code_is_never_evaluated():
    node = nuke.nodes.Grade(label="[value name] v2")
    node.setName("Key")
    assert node["label"].value() == "Key v2" and node["label"].evaluate() == "Key v2"
    button = nuke.PyScript_Knob("b", "b", "x = [value name]")
    node.addKnob(button)
    assert button.value() == button.command() == "x = [value name]"


# -- selectedNode ----------------------------------------------------------------------------------


def test_selected_node_is_an_output_of_the_highest_selected_level_wherever_the_context():
    group = nuke.nodes.Group()
    with group:
        inner = nuke.nodes.Blur()
        inner.setSelected(True)
    assert nuke.selectedNode() is inner   # nothing selected at the top: found inside the group
    read = nuke.nodes.Constant()
    below = nuke.nodes.Grade(inputs=[read])
    below.setSelected(True)
    read.setSelected(True)   # selected last, but it feeds a selected node
    with group:
        assert nuke.selectedNode() is below


def test_with_nothing_selected_it_is_the_node_under_the_pointer_after_a_hotkey():
    node = nuke.nodes.Blur()
    with pytest.raises(ValueError, match="No node selected"):
        nuke.selectedNode()
    hostctl.set_node_under_pointer(node)
    assert nuke.selectedNode() is node


# -- menus -----------------------------------------------------------------------------------------


def test_menu_arguments_after_the_name_go_by_keyword():
    menu = nuke.menu("Nodes")
    with pytest.raises(TypeError):
        menu.addMenu("Tools", "tools.png")
    sub = menu.addMenu("Tools", icon="tools.png", tooltip="tips", index=0)
    assert menu.items()[0] is sub and sub.icon() == "tools.png"
    with pytest.raises(TypeError):
        sub.addSeparator(0)
    item = sub.addCommand("Blur it", "nuke.createNode('Blur')", "ctrl+b", icon="blur.png")
    assert (item.shortcut(), item.icon()) == ("ctrl+b", "blur.png")
    menu.removeItem("Tools")


@pytest.mark.parametrize("command, name", [
    ("for c in ('Blur', 'Grade', 'NoOp'): nuke.createNode(c, inpanel=False)", "three nodes"),
    ("with nuke.Undo('Named'):\n    nuke.nodes.Blur()\nnuke.nodes.Grade()\nnuke.nodes.NoOp()",
     "Named"),
])
def test_a_menu_command_is_one_undo_step(command, name):
    item = nuke.menu("Nodes").addCommand("three nodes", command)
    item.invoke()
    assert len(nuke.allNodes()) == 3 and nuke.Undo.undoSize() == 1
    assert nuke.Undo.undoDescribe() == name
    nuke.undo()
    assert nuke.allNodes() == []
    nuke.menu("Nodes").removeItem("three nodes")


def test_a_failing_menu_command_still_ends_as_one_step():
    def command():
        nuke.nodes.Blur()
        nuke.nodes.Grade()
        raise RuntimeError("half way")

    item = nuke.menu("Nodes").addCommand("fails", command)
    with pytest.raises(RuntimeError):
        item.invoke()
    assert nuke.Undo.undoSize() == 1
    nuke.undo()
    assert nuke.allNodes() == []
    nuke.menu("Nodes").removeItem("fails")


# -- Undo ------------------------------------------------------------------------------------------


@pytest.mark.parametrize("instance_only", [False, True])
def test_undo_groups_in_the_instance_form_work_in_every_version(instance_only):
    hostctl.set_undo_instance_only(instance_only)
    undo = nuke.Undo()
    undo.begin("Two nodes")
    nuke.nodes.Blur()
    nuke.nodes.Grade()
    undo.end()
    assert undo.undoSize() == 1 and undo.undoDescribe() == "Two nodes"
    if instance_only:
        with pytest.raises(TypeError):
            nuke.Undo.begin("class level")
    else:
        nuke.Undo.begin("class level")
        nuke.nodes.NoOp()
        nuke.Undo.end()
        assert nuke.Undo.undoSize() == 2
    with nuke.Undo():
        nuke.nodes.Dot()
    nuke.undo()
    assert nuke.allNodes("Dot") == []


# -- clipboard -------------------------------------------------------------------------------------


def test_the_clipboard_is_the_operating_systems():
    clipboard = QtWidgets.QApplication.clipboard()
    nuke.nodes.Blur(mix=0.5).selectOnly()
    assert nuke.nodeCopy(CLIP)
    assert "Blur {" in clipboard.text()
    text = clipboard.text()
    nuke.scriptClear()
    assert clipboard.text() == text          # a new script leaves another program's clipboard alone
    assert nuke.nodePaste(CLIP)["mix"].value() == 0.5
    clipboard.setText("Grade {\n name FromElsewhere\n}\n")
    assert nuke.nodePaste(CLIP).name() == "FromElsewhere"
    clipboard.clear()
    assert nuke.nodePaste(CLIP) is None
