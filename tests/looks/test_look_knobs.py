"""The look tab and its buttons on a node, and taking them off again."""

import pytest

from cobaltRig import helper

WIDGETS = ["looks", "look_uid", "look_new", "look_update", "look_delete", "preset_import",
           "preset_export", "look_divider", "look_knob_values"]

# button: (picture, text)
BUTTONS = {"look_new": ("look_star", "new"), "look_update": ("look_update", "update"),
           "look_delete": ("look_delete", "delete"), "preset_import": ("look_import", "import"),
           "preset_export": ("look_export", "export")}


def knob_names(node):
    return [k.name() for k in node.allKnobs()]


def look_part(node):
    names = knob_names(node)
    return names[names.index("looks"):] if "looks" in names else []


@pytest.fixture
def blur(nuke):
    return nuke.createNode("Blur", inpanel=False)


@pytest.mark.parametrize("setting, icons", [("True", True), ("true", False), ("False", False)])
def test_widgets_in_order_with_labels_and_hidden_knobs(rig, blur, setting, icons):
    helper.update_xml("look_icons", setting)
    rig.create_looks_widgets(blur)

    assert look_part(blur) == WIDGETS
    assert blur["looks"].Class() == "Tab_Knob" and blur["looks"].label() == "looks"
    for name, (picture, text) in BUTTONS.items():
        icon = "<img src='{}.png' /> ".format(picture) if icons else ""
        assert blur[name].label() == icon + text
    assert not blur["look_uid"].visible() and not blur["look_knob_values"].visible()
    assert blur["look_divider"].visible() and blur["look_divider"].label() == ""
    assert blur["look_uid"].label() and "'" not in blur["look_uid"].label()
    assert blur["look_knob_values"].Class() == "PythonKnob"


@pytest.mark.parametrize("node_class, refused", [
    ("Viewer", True), ("Preferecnes", True),
    ("viewer", False), ("Preferences", False), ("Viewer2", False),
])
def test_refused_classes_are_compared_as_exact_text(rig, blur, monkeypatch, node_class, refused):
    monkeypatch.setattr(type(blur), "Class", lambda self: node_class)
    rig.create_looks_widgets(blur)
    assert (look_part(blur) == []) == refused


@pytest.mark.parametrize("case", ["made by the artist", "lost a button", "the host refuses"])
def test_an_existing_looks_tab_is_left_as_it_is_and_a_refusal_adds_nothing(
        rig, nuke, blur, host, monkeypatch, capsys, case):
    expected = []
    if case == "made by the artist":
        blur.addKnob(nuke.Tab_Knob("looks", "my own looks"))
        expected = ["looks"]
    elif case == "lost a button":
        rig.create_looks_widgets(blur)
        blur.removeKnob(blur["look_update"])
        expected = [w for w in WIDGETS if w != "look_update"]
    else:
        def refuse(*args, **kwargs):
            raise RuntimeError("knob refused")

        monkeypatch.setattr(nuke, "PythonKnob", refuse)
    for _ in range(2):
        rig.create_looks_widgets(blur)
    assert look_part(blur) == expected and host.messages == []
    assert capsys.readouterr().err == ""


def test_look_knobs_are_found_by_containment_and_taken_off_with_or_without_the_tab(
        rig, nuke, host):
    nodes = [nuke.createNode(cls, inpanel=False) for cls in ("Blur", "Grade", "Transform")]
    looks = ["look_preset_1", "look_preset_10", "my_look_preset_x"]
    for node in nodes:
        rig.create_looks_widgets(node)
        for name in looks + ["look_presets"]:  # the last is no look knob
            node.addKnob(nuke.PyScript_Knob(name, name))
    assert sorted(k.name() for k in rig.get_preset_knobs(nodes[0])) == looks
    standard = {node.name(): set(knob_names(node)) - set(WIDGETS) - set(looks) for node in nodes}
    old_uid = nodes[0]["look_uid"].label()
    kept = nodes[2]
    for node in nodes:
        node.setSelected(node is not kept)

    rig.delete_selected_nodes_looks()

    for node in nodes[:2]:
        assert set(knob_names(node)) == standard[node.name()]
    assert look_part(kept)[:len(WIDGETS)] == WIDGETS
    rig.remove_preset_knobs(kept)  # the looks go, the tab stays
    assert rig.get_preset_knobs(kept) == [] and look_part(kept) == WIDGETS + ["look_presets"]

    rig.create_looks_widgets(nodes[0])
    assert look_part(nodes[0]) == WIDGETS
    assert nodes[0]["look_uid"].label() != old_uid
