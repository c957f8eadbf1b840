"""The host's script language: published scripts, and hand-written ones showing each construct,
read as the host reads them and written back unchanged."""

import glob
import os
import re

import pytest

import hostctl
import nuke

HERE = os.path.dirname(os.path.abspath(__file__))
# Published scripts shared by the team beside the repository; never copied into it.
CORPUS = os.path.normpath(os.path.join(HERE, "..", "..", "..", "shared", "corpus", "nst"))
CORPUS_SCRIPTS = sorted(glob.glob(os.path.join(CORPUS, "**", "*.nk"), recursive=True))


def script(name):
    return os.path.join(HERE, "scripts", name)


def inputs(node):
    return [None if n is None else n.name() for n in (node.input(i) for i in range(node.inputs()))]


def graph(group=None, prefix=""):
    """Every node under `group` by path: class, connections and each knob's class and script text."""
    found = {}
    for node in (group or nuke.root()).nodes():
        path = prefix + node.name()
        found[path] = (node.Class(), inputs(node),
                       [(k.name(), k.Class(), k.toScript()) for k in node.allKnobs()
                        if k.Class() != "Tab_Knob"])
        if isinstance(node, nuke.Group):
            found.update(graph(node, path + "."))
    return found


def text():
    """The script as saved; the root's name is where it was opened from, the rest must not move."""
    return re.sub(r"\n name [^\n]*", "", hostctl.script_text(), count=1)


def reopen(tmp_path):
    copy = str(tmp_path / "copy.nk")
    nuke.scriptSave(copy)
    nuke.scriptOpen(copy)


def copy_all_into_a_new_script(tmp_path):
    for node in nuke.allNodes():
        node.setSelected(True)
    copy = str(tmp_path / "copy.nk")
    assert nuke.nodeCopy(copy)
    nuke.scriptClear()
    nuke.nodePaste(copy)


def test_the_corpus_is_there():
    assert os.path.isdir(CORPUS), "the shared corpus of published scripts is missing: " + CORPUS
    assert len(CORPUS_SCRIPTS) == 65


@pytest.mark.parametrize("path", CORPUS_SCRIPTS, ids=os.path.basename)
def test_a_published_script_opens_and_saves_back_the_same_graph(path, tmp_path):
    nuke.scriptOpen(path)
    # Each node keeps the name its block gives it.
    names = set(re.findall(r"^ *name (\S+)$", open(path).read(), re.M))
    assert nuke.allNodes() and all(n.name() in names for n in nuke.allNodes(recurseGroups=True))
    first = graph(), text()
    reopen(tmp_path)
    assert (graph(), text()) == first


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
    assert knobs["mode"].values() == ["fast", "very slow", ""]
    assert knobs["mode"].value() == "very slow"
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


def check_masks_and_clones():
    mix, mult, clone = nuke.toNode("Mix"), nuke.toNode("Mult"), nuke.toNode("Merge1")
    assert inputs(nuke.toNode("Warm")) == ["Plate", "Matte"]
    assert inputs(mix) == ["Warm", "Plate", "Matte"] and inputs(mult) == ["Plate", "Matte"]
    assert clone.Class() == "Merge2" and inputs(clone) == ["Warm", "Mult"]
    assert clone["operation"].value() == "multiply" and (clone.xpos(), clone.ypos()) == (100, 100)


def check_gizmo():
    gizmo = nuke.toNode("Gizmo1")
    assert gizmo.Class() == "Gizmo" and [n.name() for n in gizmo.nodes()] == [
        "img", "matte", "Inner", "Output1"]
    inner = gizmo.node("Inner")
    assert inputs(inner) == ["matte", "img"] and gizmo.maxInputs() == 2
    assert inner["mix"].toScript() == "{{curve x1 1 x10 0.25}}"
    assert inner["label"].getText() == '[value size] at "[frame]" {braces}'
    knobs = {k.name(): k for k in gizmo.allKnobs()}
    assert [knobs[n].Class() for n in ("pivot", "area", "shift", "size_link", "gadget")] == [
        "XYZ_Knob", "BBox_Knob", "UV_Knob", "Link_Knob", "Knob"]
    assert knobs["pivot"].toScript() == "{0 1 {curve x1 0 x20 2.5}}"
    assert knobs["shift"].value() == [0.5, 0.25] and knobs["size_link"].getLink() == "Inner.size"
    assert not knobs["gadget"].visible() and knobs["gadget"].toScript() == '"{whatever it holds}"'


def check_saved_script():
    root = nuke.root()
    assert root["proxy"].value() is True and root["format"].value().name() == "2K_Super_35(full-ap)"
    assert (root["last_frame"].value(), root["fps"].value()) == (48, 25.0)
    viewer = nuke.toNode("Viewer1")
    assert inputs(viewer) == ["CheckerBoard1"] and nuke.selectedNodes() == [viewer.input(0)]
    assert " colorManagement OCIO\n" in hostctl.script_text()


# How a script comes in, and how it goes out and comes back in.
ROUTES = {"paste": (nuke.nodePaste, copy_all_into_a_new_script), "open": (nuke.scriptOpen, reopen)}


@pytest.mark.parametrize("name, check, route", [
    ("chain.nk", check_chain, "paste"), ("branches.nk", check_branches, "paste"),
    ("group.nk", check_group, "paste"), ("user_knobs.nk", check_user_knobs, "paste"),
    ("strings.nk", check_strings, "paste"), ("unknown.nk", check_unknown, "paste"),
    ("masks_and_clones.nk", check_masks_and_clones, "open"), ("gizmo.nk", check_gizmo, "open"),
    ("saved_script.nk", check_saved_script, "open")])
def test_a_hand_written_script_reads_as_the_host_reads_it_and_writes_back_unchanged(
        name, check, route, tmp_path):
    load, out_and_back = ROUTES[route]
    load(script(name))
    assert nuke.root().name() == (script(name) if route == "open" else "Root")
    check()
    first = graph(), text()
    out_and_back(tmp_path)
    check()
    assert (graph(), text()) == first


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


@pytest.mark.parametrize("content, where", [
    ("hello", ""), ('{"format": "something else", "nodes": []}', ""), ("Blur {\n size 3\n", ""),
    ('Blur {\n label "x\n}', ""), ("Blur {}\nGrade {\n inputs two\n}", ""),
    ("Blur {\n addUserKnob {22 run T \"unclosed}\n}", ""), (b"\x89PNG\r\n\x1a\n\xff\xfe\x00", ""),
    (None, ""), ("push $nowhere\nBlur {\n}\n", "line 1"), ("Blur {\n inputs 1+x\n}\n", "line 1"),
    ("set C [stack 0]\nclone $D {\n xpos 1\n}\n", "line 2"),
    ("Blur {\n label {open\n}\n", "{ without its }")])
def test_text_that_is_no_script_fails_naming_the_file_and_where_and_pastes_nothing(
        content, where, tmp_path):
    path = tmp_path / "not_a_script.nk"
    if isinstance(content, bytes):
        path.write_bytes(content)
    elif content is not None:
        path.write_text(content)
    message = r"not_a_script\.nk.*" + re.escape(where)
    with pytest.raises(RuntimeError, match=message):
        nuke.nodePaste(str(path))
    with pytest.raises(RuntimeError, match=message):
        nuke.scriptOpen(str(path))
    assert nuke.allNodes() == [] and nuke.root().name() == "Root"


def test_a_clone_is_saved_as_a_clone_until_its_knobs_part_from_the_original(tmp_path):
    nuke.scriptOpen(script("masks_and_clones.nk"))
    assert "clone $C" in text()
    nuke.toNode("Merge1")["operation"].setValue("screen")
    assert "clone $" not in text()
    reopen(tmp_path)
    assert nuke.toNode("Merge1")["operation"].value() == "screen"
    assert nuke.toNode("Mix")["operation"].value() == "multiply"


@pytest.mark.parametrize("selected, expected", [(True, ["Plate"]), (False, [])])
def test_a_clipboard_script_pushing_the_hosts_own_variable_first_hooks_onto_the_selection(
        selected, expected):
    plate = nuke.nodes.Read(name="Plate")
    plate.setSelected(selected)
    last = nuke.nodePaste(script("clipboard.nk"))
    assert inputs(nuke.toNode("Soft")) == expected and inputs(nuke.toNode("After")) == ["Soft"]
    # A class named in lower case is still a node; a command in braces is none.
    assert last.Class() == "apEdgeTool" and len(nuke.allNodes()) == 4
