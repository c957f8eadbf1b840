"""Choosing a pool in either window, the icon-size slider, and the rewrite of the settings file
behind both."""

import pytest
from PySide2 import QtCore

pytestmark = pytest.mark.usefixtures("windows")

SETTINGS = """<?xml version='1.0' encoding='utf-8'?>
<cobaltRig>
  <!-- kept by hand -->
  <settings>
    <setting name="current_pool">one</setting>
    <setting name="icon_size">20</setting>
    <setting name="current_pool">one</setting>
    <setting>nameless</setting>
  </settings>
  <pools>
    <pool name="one">{one}</pool>
    <pool name="two">{two}</pool>
  </pools>
  <flags><flag>1,2,3</flag></flags>
  <studio site="north">kept</studio>
</cobaltRig>
"""


@pytest.fixture
def two_pools(make_pool, helper):
    one = make_pool("one", "nodes/Grade/warm.nk", "toolsets/")
    two = make_pool("two", "nodes/Blur/soft.nk", "toolsets/")
    with open(helper.get_settings_xml(), "w", encoding="utf-8") as handle:
        handle.write(SETTINGS.format(one=one, two=two))
    return one, two


def parsed(helper):
    import xml.etree.ElementTree as ET

    return ET.parse(helper.get_settings_xml()).getroot()


def test_a_change_of_pool_rewrites_every_entry_of_the_key_and_keeps_the_rest(
        rig, helper, two_pools, monkeypatch):
    import xml.etree.ElementTree as ET

    # Hosts with Python 3.7 have a tostring without the declaration switch.
    monkeypatch.setattr(ET, "tostring", lambda element, encoding=None, method=None: b"")
    window = rig.import_preset()
    window.combo_pool.setCurrentIndex(1)

    raw = open(helper.get_settings_xml(), "rb").read()
    assert raw.startswith(b"<?xml version='1.0' encoding='utf-8'?>")
    root = parsed(helper)
    assert [(s.get("name"), s.text) for s in root.find("settings")] == [
        ("current_pool", "two"), ("icon_size", "20"), ("current_pool", "two"), (None, "nameless")]
    assert root.find("studio").get("site") == "north" and root.find("studio").text == "kept"
    assert [f.text for f in root.find("flags")] == ["1,2,3"]
    assert helper.load_settings()["pools"] == {"one": str(two_pools[0]), "two": str(two_pools[1])}
    # a key the file doesn't hold stays absent
    assert "hide_disabled_items" not in raw.decode()


def test_the_next_export_window_opens_on_the_pool_chosen_in_the_import_window(
        rig, nuke, helper, two_pools, user):
    window = rig.import_preset()
    window.combo_pool.setCurrentIndex(1)
    assert window.combo_pool.toolTip() == str(two_pools[1])
    assert str(two_pools[1] / "nodes" / "Blur" / "soft.nk") in user.items(window)

    export = rig.show_export_window(nuke.nodes.Blur())
    assert export.combo_pool.currentText() == "two"
    assert export.combo_pool.toolTip() == str(two_pools[1])
    assert export.tree.currentItem().data(0, QtCore.Qt.UserRole) == str(two_pools[1] / "nodes" / "Blur")


def test_opening_a_window_stores_nothing(rig, nuke, helper, two_pools):
    before = open(helper.get_settings_xml(), "rb").read()
    rig.import_preset()
    rig.show_export_window(nuke.nodes.Blur())
    assert open(helper.get_settings_xml(), "rb").read() == before


def test_new_pool_opens_the_panel_and_changes_nothing_else(rig, nuke, helper, two_pools,
                                                           monkeypatch, user):
    from cobaltRig import settings

    calls = []
    monkeypatch.setattr(settings, "show_panel_new_pool",
                        lambda parent=None, exportwindow=None: calls.append((parent, exportwindow)))
    window = rig.show_export_window("toolsets")
    before = open(helper.get_settings_xml(), "rb").read()
    tree_before = sorted(user.items(window))

    window.combo_pool.setCurrentIndex(window.combo_pool.count() - 1)

    assert calls == [(None, window)]
    assert window.combo_pool.currentText() == "-- new pool --"
    assert window.combo_pool.toolTip() == str(two_pools[0])
    assert sorted(user.items(window)) == tree_before
    assert open(helper.get_settings_xml(), "rb").read() == before


def test_a_pool_added_through_the_panel_shows_up_and_is_stored(rig, nuke, helper, two_pools,
                                                               monkeypatch, tmp_path, user):
    from cobaltRig import settings

    added = tmp_path / "added"

    def panel(parent=None, exportwindow=None):
        settings.store_new_pool("added", str(added))
        settings.show_new_pool_in_window(exportwindow, "added")

    monkeypatch.setattr(settings, "show_panel_new_pool", panel)
    window = rig.show_export_window(nuke.nodes.Blur())
    window.combo_pool.setCurrentIndex(window.combo_pool.count() - 1)

    assert window.combo_pool.currentText() == "added"
    assert window.combo_pool.toolTip() == str(added)
    assert (added / "nodes" / "Blur").is_dir()
    assert window.tree.currentItem().data(0, QtCore.Qt.UserRole) == str(added / "nodes" / "Blur")
    assert helper.load_settings()["current_pool"] == "added"


def test_an_unknown_current_pool_leaves_the_first_entry_without_path(rig, nuke, helper,
                                                                      two_pools):
    helper.update_xml("current_pool", "gone")
    window = rig.show_export_window(nuke.nodes.Blur())
    assert window.combo_pool.currentIndex() == 0 and window.combo_pool.toolTip() == ""
    assert window.tree.topLevelItemCount() == 0
    assert not (two_pools[0] / "nodes" / "Blur").exists()


def test_the_size_slider_stores_the_size_and_resizes_only_its_own_tree(rig, nuke, helper,
                                                                        two_pools):
    importer = rig.import_preset()
    exporter = rig.show_export_window(nuke.nodes.Blur())
    import_size = importer.tree.iconSize()

    exporter.slider_size.setValue(33)

    assert exporter.tree.iconSize() == QtCore.QSize(33, 33)
    assert importer.tree.iconSize() == import_size
    assert helper.load_settings()["icon_size"] == "33"


def test_a_failed_rewrite_leaves_the_settings_file_as_it_was(rig, helper, two_pools,
                                                             monkeypatch, capsys):
    window = rig.import_preset()
    before = open(helper.get_settings_xml(), "rb").read()

    def broken_layout(root, level=0):
        raise RuntimeError("layout failed")

    monkeypatch.setattr(helper, "prettyprint", broken_layout)
    window.combo_pool.setCurrentIndex(1)

    assert "layout failed" in capsys.readouterr().err
    assert open(helper.get_settings_xml(), "rb").read() == before
    # the window itself went on to the new pool
    assert window.combo_pool.toolTip() == str(two_pools[1])
