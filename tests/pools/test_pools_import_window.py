"""The import window: the whole pool in its tree, and the search that filters it."""

import pytest
from cobaltRig.qt import QtCore


@pytest.fixture
def library(make_pool):
    return make_pool("lib", "nodes/Grade/warm.nk", "nodes/Grade/cold.nk", "nodes/Blur/Soft.nk",
                     "nodes/loose.nk", "toolsets/fx/glow.nk", "toolsets/fx/deep/inner.nk",
                     "toolsets/keys/despill.nk", "top.nk", "misc/")


def shown(window, user):
    """Labels of the presets that no hidden item hides."""
    def visible(item):
        return item is None or (not item.isHidden() and visible(item.parent()))

    return sorted(item.text(0) for path, item in user.items(window).items()
                  if path.endswith(".nk") and visible(item))


@pytest.mark.parametrize("size, transparent", [(32, True), (12, False)])
def test_the_tree_shows_the_whole_pool_with_nothing_disabled(rig, library, user, helper, advanced,
                                                             size, transparent):
    helper.update_xml("icon_size", str(size))
    advanced(import_window_transparent=str(transparent))
    window = rig.import_preset()
    assert window.widget.styleSheet() == ("QWidget{ background-color: transparent; }"
                                          if transparent else helper.STYLE_SHEET)

    items = user.items(window)
    assert window.widget.windowTitle() == "Import node/toolset"
    assert len(items) == 17 and not any(item.isDisabled() for item in items.values())
    assert sorted(p for p, item in items.items() if item.isExpanded()) == \
        [str(library), str(library / "nodes"), str(library / "toolsets")]
    # pool folder aside: nodes, Grade, Blur, toolsets, fx, deep, keys, misc
    assert (window.count_dirItem, window.widget.height()) == (8, 480)
    assert window.tree.iconSize() == QtCore.QSize(size, size) and window.slider_size.value() == size
    assert window.tree.currentItem() is None


@pytest.mark.parametrize("text, presets", [
    # by file name, extension included, case-sensitive; "inner" shows when its folder "deep" does;
    # "loose" (directly in nodes) goes with any search; "top" (in the pool) is out of its reach
    (".nk", ["Soft", "cold", "despill", "glow", "top", "warm"]),
    ("o", ["Soft", "cold", "glow", "top"]),
    ("S", ["Soft", "top"]),
    ("e", ["despill", "inner", "top"]),
    ("zzz", ["top"]),
])
def test_search_filters_by_file_name(rig, library, qtbot, user, text, presets):
    window = rig.import_preset()
    qtbot.keyClicks(window.input_name, text)
    assert shown(window, user) == presets


@pytest.mark.parametrize("layout", [(), ("nodes/Grade/warm.nk",)])
def test_search_on_an_empty_tree_or_a_pool_with_one_folder_fails_nowhere(
        rig, make_pool, qtbot, user, capsys, layout):
    pool = make_pool("thin", *layout)
    if not layout:
        pool.rmdir()
    window = rig.import_preset()
    qtbot.keyClicks(window.input_name, "cold")
    assert shown(window, user) == []
    window.input_name.clear()
    assert shown(window, user) == (["warm"] if layout else [])
    assert capsys.readouterr().err == ""


def test_categories_open_on_a_match_clearing_closes_them_and_a_rebuilt_tree_is_searched_anew(
        rig, library, qtbot, user):
    window = rig.import_preset()
    items = user.items(window)
    grade, blur = items[str(library / "nodes" / "Grade")], items[str(library / "nodes" / "Blur")]
    blur.setExpanded(True)

    qtbot.keyClicks(window.input_name, "warm")
    assert grade.isExpanded() and not grade.isHidden() and blur.isHidden()

    window.input_name.clear()
    assert not grade.isExpanded() and not blur.isExpanded()
    assert not any(item.isHidden() for item in items.values())
    assert items[str(library / "nodes")].isExpanded() and items[str(library / "toolsets")].isExpanded()

    # The search keeps what it reads of the items between keystrokes; a rebuilt tree must not be
    # searched through the items of the old one.
    qtbot.keyClicks(window.input_name, "warm")
    (library / "nodes" / "Blur" / "warmer.nk").write_text("")
    (library / "nodes" / "Grade" / "warm.nk").unlink()
    window.populate_tree()
    assert shown(window, user) == ["Soft", "cold", "despill", "glow", "inner", "loose", "top", "warmer"]
    qtbot.keyClicks(window.input_name, "e")
    assert shown(window, user) == ["top", "warmer"]
    window.input_name.clear()
    assert len(shown(window, user)) == 8
