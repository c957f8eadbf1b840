"""The entries that open the pool windows: from the host side, and from a node's look tab."""

import pytest

pytestmark = pytest.mark.usefixtures("windows")


@pytest.fixture
def export_switch(helper, monkeypatch):
    def set_switch(value):
        advanced = dict(helper.parse_advanced_settings(), export_items=value)
        monkeypatch.setattr(helper, "parse_advanced_settings", lambda: dict(advanced))

    return set_switch


@pytest.mark.parametrize("selected, title", [
    (0, None),
    (1, "Export Blur look"),
    (2, "Export toolsets look"),
])
def test_export_nodes_follows_the_selection(rig, nuke, host, pool, selected, title):
    rig.__dict__.pop("exportwindow", None)
    nodes = [nuke.nodes.Blur(), nuke.nodes.Grade()]
    for node in nodes[:selected]:
        node.setSelected(True)

    assert rig.export_nodes() is None

    if title is None:
        assert not hasattr(rig, "exportwindow")
    else:
        assert rig.exportwindow.widget.windowTitle() == title
        assert rig.exportwindow.isVisible()
    assert host.messages == []


@pytest.mark.parametrize("selected", [0, 1])
def test_export_nodes_can_be_switched_off(rig, nuke, host, pool, export_switch, selected):
    rig.__dict__.pop("exportwindow", None)
    export_switch("False")
    if selected:
        nuke.nodes.Blur().setSelected(True)
    rig.export_nodes()
    assert host.messages == ["Exporting nodes is disabled."]
    assert not hasattr(rig, "exportwindow")


def test_export_preset_is_for_that_node_alone(rig, nuke, pool):
    nuke.nodes.Blur().setSelected(True)
    nuke.nodes.Merge2().setSelected(True)
    grade = nuke.nodes.Grade()
    assert rig.export_preset(grade, "signal value") is None
    assert rig.exportwindow.node is grade
    assert rig.exportwindow.widget.windowTitle() == "Export Grade look"


def test_the_look_tab_buttons_open_the_pool_windows(rig, nuke, pool):
    node = nuke.nodes.Grade()
    rig.create_looks_widgets(node)

    node["preset_export"].execute()
    assert rig.exportwindow.node is node and rig.exportwindow.isVisible()

    node["preset_import"].execute()
    assert rig.i.isVisible()
    assert rig.i.combo_pool.currentText() == "main"
