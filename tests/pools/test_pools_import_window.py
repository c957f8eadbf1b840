"""The import window: the whole pool in its tree, and the search that filters it."""

import pytest
from PySide2 import QtCore

pytestmark = pytest.mark.usefixtures("windows")


@pytest.fixture
def library(make_pool):
    return make_pool("lib", "nodes/Grade/warm.nk", "nodes/Grade/cold.nk", "nodes/Blur/Soft.nk",
                     "nodes/loose.nk", "toolsets/fx/glow.nk", "toolsets/fx/deep/inner.nk",
                     "toolsets/keys/despill.nk", "top.nk", "misc/")


def test_the_tree_shows_the_whole_pool_with_nothing_disabled(rig, library, user, helper):
    helper.update_xml("icon_size", "32")
    window = rig.import_preset()

    items = user.items(window)
    assert window.widget.windowTitle() == "Import node/toolset"
    assert not any(item.isDisabled() for item in items.values())
    # listing order is the file system's: compare as sets
    assert set(user.visible_labels(window)) == {
        "lib", "nodes", "Grade", "Blur", "loose", "toolsets", "fx", "keys", "misc", "top"}
    assert window.tree.iconSize() == QtCore.QSize(32, 32) and window.slider_size.value() == 32
    assert window.tree.dragEnabled()
    assert window.tree.currentItem() is None


@pytest.mark.parametrize("switch, sheet", [
    ("True", "QWidget{ background-color: transparent; }"),
    ("False", None),
])
def test_the_transparent_switch(rig, pool, helper, monkeypatch, switch, sheet):
    advanced = dict(helper.parse_advanced_settings(), import_window_transparent=switch)
    monkeypatch.setattr(helper, "parse_advanced_settings", lambda: dict(advanced))
    window = rig.import_preset()
    assert window.widget.styleSheet() == (sheet or helper.STYLE_SHEET)


def visible_presets(window, user):
    return sorted(item.text(0) for path, item in user.items(window).items()
                  if path.endswith(".nk") and not hidden(item))


def hidden(item):
    while item is not None:
        if item.isHidden():
            return True
        item = item.parent()
    return False


@pytest.mark.parametrize("text, shown", [
    # matched against the file name, extension included, case-sensitive
    (".nk", ["Soft", "cold", "despill", "glow", "top", "warm"]),
    ("o", ["Soft", "cold", "glow", "top"]),
    ("s", ["despill", "top"]),
    ("S", ["Soft", "top"]),
    ("e", ["despill", "inner", "top"]),
    ("zzz", ["top"]),
])
def test_search_filters_by_file_name(rig, library, qtbot, user, text, shown):
    window = rig.import_preset()
    qtbot.keyClicks(window.input_name, text)
    # "inner" hangs below the folder "deep", which the search matches by its own name; "loose"
    # lies directly in nodes and goes with any search; "top" lies directly in the pool, out of
    # the search's reach.
    assert visible_presets(window, user) == shown


def test_categories_open_on_a_match_and_clearing_restores_and_closes_them(
        rig, library, qtbot, user):
    window = rig.import_preset()
    items = user.items(window)
    grade, blur = items[str(library / "nodes" / "Grade")], items[str(library / "nodes" / "Blur")]
    loose = items[str(library / "nodes" / "loose.nk")]
    blur.setExpanded(True)

    qtbot.keyClicks(window.input_name, "warm")
    assert grade.isExpanded() and not grade.isHidden()
    assert blur.isHidden() and loose.isHidden()

    window.input_name.clear()
    assert not grade.isExpanded() and not blur.isExpanded()
    assert not any(item.isHidden() for item in items.values())
    assert items[str(library / "nodes")].isExpanded()
    assert items[str(library / "toolsets")].isExpanded()


def test_search_follows_a_change_of_pool(rig, library, make_pool, qtbot, user):
    other = make_pool("other", "nodes/Grade/warm_v2.nk", "nodes/Grade/hot.nk", "toolsets/")
    window = rig.import_preset()
    qtbot.keyClicks(window.input_name, "war")
    window.combo_pool.setCurrentIndex(1)
    assert window.combo_pool.toolTip() == str(other)
    # a new tree shows everything until the field changes again
    assert visible_presets(window, user) == ["hot", "warm_v2"]
    qtbot.keyClicks(window.input_name, "m")
    assert visible_presets(window, user) == ["warm_v2"]


@pytest.mark.parametrize("layout", [(), ("nodes/Grade/warm.nk",)])
def test_search_on_an_empty_tree_or_a_pool_with_one_folder_does_nothing_harmful(
        rig, make_pool, qtbot, user, capsys, layout):
    pool = make_pool("thin", *layout)
    if not layout:
        pool.rmdir()
    window = rig.import_preset()
    qtbot.keyClicks(window.input_name, "wa")
    window.input_name.clear()
    assert capsys.readouterr().err == ""
    if layout:
        qtbot.keyClicks(window.input_name, "cold")
        assert visible_presets(window, user) == []
        window.input_name.clear()
        assert visible_presets(window, user) == ["warm"]


def test_opening_twice_leaves_the_second_window_which_read_the_pool_anew(rig, library, helper):
    first = rig.import_preset()
    (library / "nodes" / "Grade" / "new.nk").write_text("")
    helper.update_xml("icon_size", "12")
    second = rig.import_preset("signal value")
    assert rig.i is second and not first.isVisible() and second.isVisible()
    assert second.slider_size.value() == 12
    assert str(library / "nodes" / "Grade" / "new.nk") in [
        item.data(0, QtCore.Qt.UserRole) for item in
        [second.dirlist[str(library / "nodes" / "Grade")].child(k) for k in range(3)]]
