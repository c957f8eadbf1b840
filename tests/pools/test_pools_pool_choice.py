"""Choosing a pool in either window, the icon-size slider, and the rewrite of the settings file
behind both."""

import xml.etree.ElementTree as ET

import pytest
from cobaltRig.qt import QtCore, QtWidgets

SETTINGS = """<?xml version='1.0' encoding='utf-8'?>
<cobaltRig>
  <settings>
    <setting name="current_pool">one</setting>
    <setting name="icon_size">20</setting>
    <setting name="current_pool">one</setting>
  </settings>
  <pools>
    <pool name="one">{one}</pool>
    <pool name="two">{two}</pool>
  </pools>
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


def settings_bytes(helper):
    with open(helper.get_settings_xml(), "rb") as handle:
        return handle.read()


def test_a_change_of_pool_rewrites_every_entry_of_the_key_and_keeps_the_rest(
        rig, helper, two_pools, monkeypatch, capsys):
    window = rig.import_preset()
    before = settings_bytes(helper)

    def broken_layout(root, level=0):
        raise RuntimeError("layout failed")

    with monkeypatch.context() as patch:  # a rewrite that fails leaves the file as it was
        patch.setattr(helper, "prettyprint", broken_layout)
        window.combo_pool.setCurrentIndex(1)
    assert "layout failed" in capsys.readouterr().err
    assert settings_bytes(helper) == before

    # Hosts with Python 3.7 have a tostring without the declaration switch.
    monkeypatch.setattr(ET, "tostring", lambda element, encoding=None, method=None: b"")
    window.combo_pool.setCurrentIndex(0)
    window.combo_pool.setCurrentIndex(1)

    raw = settings_bytes(helper)
    assert raw.startswith(b"<?xml version='1.0' encoding='utf-8'?>")
    root = ET.fromstring(raw)
    assert [(s.get("name"), s.text) for s in root.find("settings")] == [
        ("current_pool", "two"), ("icon_size", "20"), ("current_pool", "two")]
    assert root.find("studio").get("site") == "north" and root.find("studio").text == "kept"
    assert b"hide_disabled_items" not in raw  # a key the file doesn't hold stays absent


def test_the_next_export_window_opens_on_the_pool_chosen_sizes_its_own_tree_and_opens_new_pool(
        rig, nuke, helper, two_pools, user, monkeypatch):
    from cobaltRig import settings

    before = settings_bytes(helper)
    window = rig.import_preset()
    assert settings_bytes(helper) == before  # opening a window stores nothing
    window.combo_pool.setCurrentIndex(1)
    assert window.combo_pool.toolTip() == str(two_pools[1])
    assert str(two_pools[1] / "nodes" / "Blur" / "soft.nk") in user.items(window)

    one, two = two_pools
    export = rig.show_export_window(nuke.nodes.Blur())
    assert (export.combo_pool.currentText(), export.combo_pool.toolTip()) == ("two", str(two))
    assert export.tree.currentItem().data(0, QtCore.Qt.UserRole) == str(two / "nodes" / "Blur")

    import_size = window.tree.iconSize()
    export.slider_size.setValue(33)
    assert export.tree.iconSize() == QtCore.QSize(33, 33) and window.tree.iconSize() == import_size
    assert helper.load_settings()["icon_size"] == "33"

    # The class folder is made when the window opens, not on a change of pool.
    export.combo_pool.setCurrentIndex(0)
    assert export.combo_pool.toolTip() == str(one) and not (one / "nodes" / "Blur").exists()
    assert export.tree.currentItem() is None and str(one / "nodes") in user.items(export)
    assert helper.load_settings()["current_pool"] == "one"

    # "-- new pool --" opens the panel and changes nothing else.
    calls = []
    monkeypatch.setattr(settings, "show_panel_new_pool",
                        lambda parent=None, exportwindow=None: calls.append((parent, exportwindow)))
    before, tree_before = settings_bytes(helper), sorted(user.items(export))
    export.combo_pool.setCurrentIndex(export.combo_pool.count() - 1)
    assert calls == [(None, export)] and export.combo_pool.currentText() == "-- new pool --"
    assert export.combo_pool.toolTip() == str(one) and sorted(user.items(export)) == tree_before
    assert settings_bytes(helper) == before


@pytest.mark.parametrize("layout, words", [
    ("missing", "doesn't exist"),
    ("file", "is not a folder"),
    ("unknown", "No folder is known for this pool"),
])
@pytest.mark.parametrize("open_window", [
    lambda rig, nuke: rig.import_preset(),
    lambda rig, nuke: rig.show_export_window(nuke.nodes.Blur()),
], ids=["import", "export"])
def test_an_unusable_pool_says_so_in_the_window_and_makes_no_folder(
        rig, nuke, make_pool, helper, layout, words, open_window):
    pool = make_pool("gone", "nodes/")
    if layout == "unknown":
        helper.update_xml("current_pool", "no such pool")
    else:
        (pool / "nodes").rmdir()
        pool.rmdir()
        if layout == "file":
            pool.write_text("not a folder")
    window = open_window(rig, nuke)
    notice = window.tree.viewport().findChild(QtWidgets.QLabel, "label_pool_problem")
    assert window.tree.topLevelItemCount() == 0
    assert notice.isVisible() and words in notice.text()
    assert window.combo_pool.currentIndex() == 0
    assert window.combo_pool.toolTip() == ("" if layout == "unknown" else str(pool))
    assert not (pool / "nodes" / "Blur").exists()

    if layout != "unknown":  # the drive comes back: the notice goes with the next refresh
        pool.unlink(missing_ok=True)
        (pool / "nodes").mkdir(parents=True)
        window.populate_tree()
        assert window.tree.topLevelItemCount() == 1 and not notice.isVisible()

