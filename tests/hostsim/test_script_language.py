"""The host's whole script language: real scripts artists published open, save and open again as the
same graph, and hand-written scripts show each construct (mask inputs, clones, gizmos, the host's own
variables, user knobs of every kind, animations and quoting) read as the host reads it."""

import glob
import os
import re

import pytest

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


def save(path):
    nuke.scriptSave(str(path))
    # The root's name is where the script was opened from; the rest must not move.
    return re.sub(r"\n name [^\n]*", "", path.read_text(), count=1)


def round_trip(tmp_path):
    """Saves the open script, opens the copy and saves that again: both graphs and both texts."""
    first_graph, first_text = graph(), save(tmp_path / "first.nk")
    nuke.scriptOpen(str(tmp_path / "first.nk"))
    second_graph, second_text = graph(), save(tmp_path / "second.nk")
    return first_graph, second_graph, first_text, second_text


def test_the_corpus_is_there():
    assert os.path.isdir(CORPUS), "the shared corpus of published scripts is missing: " + CORPUS
    assert len(CORPUS_SCRIPTS) == 65


@pytest.mark.parametrize("path", CORPUS_SCRIPTS, ids=os.path.basename)
def test_a_published_script_opens_and_saves_back_the_same_graph(path, tmp_path):
    nuke.scriptOpen(path)
    # Each node keeps the name its block gives it.
    names = set(re.findall(r"^ *name (\S+)$", open(path).read(), re.M))
    assert nuke.allNodes() and all(n.name() in names for n in nuke.allNodes(recurseGroups=True))
    first_graph, second_graph, first_text, second_text = round_trip(tmp_path)
    assert second_graph == first_graph
    assert second_text == first_text


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


@pytest.mark.parametrize("name, check", [("masks_and_clones.nk", check_masks_and_clones),
                                         ("gizmo.nk", check_gizmo)])
def test_each_construct_reads_as_the_host_reads_it_and_saves_back_stable(name, check, tmp_path):
    nuke.scriptOpen(script(name))
    check()
    first_graph, second_graph, first_text, second_text = round_trip(tmp_path)
    check()
    assert second_graph == first_graph and second_text == first_text


def test_a_clone_is_saved_as_a_clone_until_its_knobs_part_from_the_original(tmp_path):
    nuke.scriptOpen(script("masks_and_clones.nk"))
    assert "clone $C" in save(tmp_path / "a.nk")
    nuke.toNode("Merge1")["operation"].setValue("screen")
    text = save(tmp_path / "b.nk")
    assert "clone $" not in text
    nuke.scriptOpen(str(tmp_path / "b.nk"))
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
