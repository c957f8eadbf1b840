"""Scripts as the host writes them: hand-written files paste in with the right nodes, and what is copied
out again pastes into an empty script as the same nodes, names, knob values and connections."""

import os
import re

import pytest

import hostctl
import nuke

SCRIPTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "scripts")


def script(name):
    return os.path.join(SCRIPTS, name)


def saved_text(tmp_path):
    path = tmp_path / "whole.nk"
    nuke.scriptSave(str(path))
    return path.read_text()


def inputs(node):
    return [None if n is None else n.name() for n in (node.input(i) for i in range(node.inputs()))]


def check_chain():
    grade, blur, dot = nuke.allNodes()
    assert grade.name() == "GradeLG01_" and grade["white"].value() == [1.3, 1.0, 1.0, 1.0]
    assert grade["multiply"].value() == 0.5 and grade["tile_color"].value() == 0x34c00ff
    assert blur["size"].value() == [4.0, 2.0] and blur["label"].value() == "soft\nedges"
    assert inputs(blur) == ["GradeLG01_"] and inputs(dot) == ["Blur1"] and inputs(grade) == []
    assert (dot.xpos(), dot.ypos()) == (-6, 30)


def check_branches():
    merge, switch = nuke.toNode("Merge1"), nuke.toNode("Switch1")
    assert inputs(nuke.toNode("Blur_A")) == ["Read1"]
    assert inputs(merge) == ["Read1", "Blur_A"] and merge["operation"].value() == "screen"
    assert inputs(switch) == ["Read1", None, "Merge1"] and switch["which"].value() == 2
    assert nuke.toNode("Read1")["file"].value() == "/plates/shot_010/plate.####.exr"


def check_group():
    group = nuke.toNode("Soften")
    assert [n.name() for n in group.nodes()] == ["Input1", "Blur1", "Output1"]
    assert inputs(group) == ["Constant1"] and group.output().input(0) is group.node("Blur1")
    assert group["mult1"].value() == 2.5 and group["mult1"].label() == "amount"
    blur = group.node("Blur1")
    assert blur["size"].toScript() == "{{parent.mult1}}"
    assert blur["mix"].toScript() == '{{"parent.mult1 > 1 ? 1 : 0.5"}}'
    assert nuke.toNode("Constant1")["format"].value().name() == "square_1K"


def check_user_knobs():
    node = nuke.toNode("Controls")
    knobs = {k.name(): k for k in node.allKnobs()}
    assert [k.Class() for k in node.allKnobs()[-8:]] == [
        "Tab_Knob", "Double_Knob", "Color_Knob", "Boolean_Knob", "Link_Knob", "PyScript_Knob",
        "Text_Knob", "Enumeration_Knob"]
    assert knobs["scale"].value() == 2.0 and knobs["pick"].value() == [0.1, 0.2, 0.3]
    assert knobs["pick"].tooltip() == "the colour to key" and knobs["enabled"].value() is True
    assert knobs["mute1"].label() == "Mute" and knobs["mute1"].getLink() == "GradeLG01_.mute1"
    assert knobs["run"].label() == "run it" and knobs["run"].getFlag(nuke.STARTLINE)
    assert knobs["mode"].values() == ["fast", "very slow", ""] and knobs["mode"].value() == "very slow"
    del hostctl.messages[:]
    knobs["run"].execute()
    assert hostctl.messages == ["ran Controls"]


def check_strings():
    node = nuke.toNode("Notes")
    assert node["label"].value() == 'line one\nsaid "hi" at [frame] with {braces}'
    assert node["note_font"].value() == "Verdana Bold"
    assert node["shown"].value() == \
        'size is [value parent.size] and [python {nuke.thisNode()["name"].value()}]'
    assert node["code"].value() == "print(\"a\")\nif x[0] == '{': pass"


def check_unknown():
    frob, blur = nuke.allNodes()
    assert frob.Class() == "Frobnicate3" and frob.name() == "Frob1" and inputs(blur) == ["Frob1"]
    assert blur["size"].value() == 3.0
    # Classes and knob lines this host does not know are written back as they were read.
    text = hostctl.script_text()
    for line in ("Frobnicate3 {", " strength {{curve x1 0 x10 1}}", ' mode "very fancy"',
                 " filter quadratic", " quality 15", " crop false"):
        assert line + "\n" in text


def copy_all_into_a_new_script(tmp_path):
    for node in nuke.allNodes():
        node.setSelected(True)
    copy = str(tmp_path / "copy.nk")
    assert nuke.nodeCopy(copy)
    nuke.scriptClear()
    nuke.nodePaste(copy)


@pytest.mark.parametrize("name, check", [
    ("chain.nk", check_chain), ("branches.nk", check_branches), ("group.nk", check_group),
    ("user_knobs.nk", check_user_knobs), ("strings.nk", check_strings),
    ("unknown.nk", check_unknown)])
def test_a_hand_written_script_pastes_and_copies_out_unchanged(name, check, tmp_path):
    nuke.nodePaste(script(name))
    check()
    first = saved_text(tmp_path)
    copy_all_into_a_new_script(tmp_path)
    check()
    assert saved_text(tmp_path) == first


def merge_made_before_its_inputs():
    merge = nuke.nodes.Merge2(name="M")
    read = nuke.nodes.Read(name="R")
    blur = nuke.nodes.Blur(name="B", inputs=[read])
    merge.setInput(0, blur)
    merge.setInput(1, read)


def diamond_with_a_gap():
    read = nuke.nodes.Read(name="R")
    left = nuke.nodes.Grade(name="G", inputs=[read])
    right = nuke.nodes.Blur(name="B", inputs=[read])
    switch = nuke.nodes.Switch(name="S")
    for i, source in ((0, right), (2, left), (3, read)):
        switch.setInput(i, source)
    nuke.nodes.Dot(name="D", inputs=[switch])


@pytest.mark.parametrize("build", [merge_made_before_its_inputs, diamond_with_a_gap])
def test_a_copy_keeps_every_connection_whatever_order_the_nodes_were_made_in(build, tmp_path):
    build()
    wiring = {n.name(): inputs(n) for n in nuke.allNodes()}
    copy_all_into_a_new_script(tmp_path)
    assert {n.name(): inputs(n) for n in nuke.allNodes()} == wiring


def test_a_saved_script_opens_with_its_root_and_saves_back_what_this_host_does_not_know(tmp_path):
    nuke.scriptOpen(script("saved_script.nk"))
    root = nuke.root()
    assert root.name() == script("saved_script.nk") and root["proxy"].value() is True
    assert root["format"].value().name() == "2K_Super_35(full-ap)"
    assert (root["last_frame"].value(), root["fps"].value()) == (48, 25.0)
    viewer = nuke.toNode("Viewer1")
    assert inputs(viewer) == ["CheckerBoard1"] and nuke.selectedNodes() == [viewer.input(0)]
    copy = tmp_path / "copy.nk"
    nuke.scriptSave(str(copy))
    nuke.scriptOpen(str(copy))
    assert " colorManagement OCIO\n" in copy.read_text()
    assert saved_text(tmp_path).replace(str(copy), script("saved_script.nk")) == copy.read_text()


@pytest.mark.parametrize("text, where", [
    ("hello", ""), ('{"format": "something else", "nodes": []}', ""), ("Blur {\n size 3\n", ""),
    ('Blur {\n label "x\n}', ""), ("Blur {}\nGrade {\n inputs two\n}", ""),
    ("Blur {\n addUserKnob {22 run T \"unclosed}\n}", ""), (b"\x89PNG\r\n\x1a\n\xff\xfe\x00", ""),
    (None, ""), ("push $nowhere\nBlur {\n}\n", "line 1"), ("Blur {\n inputs 1+x\n}\n", "line 1"),
    ("set C [stack 0]\nclone $D {\n xpos 1\n}\n", "line 2"),
    ("Blur {\n label {open\n}\n", "{ without its }")])
def test_text_that_is_no_script_fails_naming_the_file_and_where_and_pastes_nothing(text, where,
                                                                                   tmp_path):
    path = tmp_path / "not_a_script.nk"
    if isinstance(text, bytes):
        path.write_bytes(text)
    elif text is not None:
        path.write_text(text)
    message = r"not_a_script\.nk.*" + re.escape(where)
    with pytest.raises(RuntimeError, match=message):
        nuke.nodePaste(str(path))
    with pytest.raises(RuntimeError, match=message):
        nuke.scriptOpen(str(path))
    assert nuke.allNodes() == [] and nuke.root().name() == "Root"
