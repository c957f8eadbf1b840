"""The export window: its tree over a pool directory, the marks that steer the user, the class
folder it makes and the categories a user adds."""

import pytest
from PySide2 import QtCore

pytestmark = pytest.mark.usefixtures("windows")


def test_a_node_without_class_folder_gets_one_that_is_current_and_open(rig, nuke, pool, user):
    window = rig.show_export_window(nuke.nodes.Blur())

    folder = pool / "nodes" / "Blur"
    assert folder.is_dir()
    assert window.widget.windowTitle() == "Export Blur look"
    current = window.tree.currentItem()
    assert current.data(0, QtCore.Qt.UserRole) == str(folder)
    assert current.isExpanded() and not current.isDisabled()
    assert window.combo_pool.toolTip() == str(pool)
    assert [window.combo_pool.itemText(k) for k in range(window.combo_pool.count())] == \
        ["main", "-- new pool --"]


def folder_marks(window, user, pool):
    """(disabled, expanded) of each folder below the pool folder, by path relative to the pool."""
    prefix = str(pool) + "/"
    return {path[len(prefix):]: (item.isDisabled(), item.isExpanded())
            for path, item in user.items(window).items()
            if path.startswith(prefix) and not path.endswith(".nk")}


@pytest.mark.parametrize("hide", [False, True])
def test_folders_are_marked_by_what_is_exported(rig, nuke, helper, make_pool, user, hide):
    pool = make_pool("main", "nodes/Grade/", "nodes/Blur/old/", "toolsets/fx/deep/", "misc/")
    helper.update_xml("hide_disabled_items", "True" if hide else "False")

    window = rig.show_export_window(nuke.nodes.Blur())

    expected = {
        "nodes": (False, True),
        "nodes/Blur": (False, True),
        "nodes/Grade": (True, False),
        "nodes/Blur/old": (True, False),
        "toolsets": (False, False),
        "toolsets/fx": (False, False),
        "toolsets/fx/deep": (True, False),
        "misc": (True, False),
    }
    if hide:
        expected = {k: v for k, v in expected.items() if not v[0]}
    assert folder_marks(window, user, pool) == expected
    assert window.count_dirItem == len(expected)


def test_a_toolset_makes_nothing_and_opens_toolsets(rig, nuke, pool, user):
    window = rig.show_export_window("toolsets")

    assert window.widget.windowTitle() == "Export toolsets look"
    assert window.get_mode() == "toolsets"
    assert window.tree.currentItem() is None
    assert sorted(p.name for p in (pool / "nodes").iterdir()) == ["Grade"]
    items = user.items(window)
    assert items[str(pool / "toolsets")].isExpanded()
    assert not items[str(pool / "nodes")].isExpanded()
    assert items[str(pool / "nodes" / "Grade")].isDisabled()


def test_a_class_named_folder_below_toolsets_is_offered_too_and_the_last_one_stays_current(
        rig, nuke, make_pool, user):
    pool = make_pool("main", "nodes/Blur/", "toolsets/Blur/")
    window = rig.show_export_window(nuke.nodes.Blur())
    visited = [p for p in user.items(window) if p.endswith("/Blur")]
    assert window.tree.currentItem().data(0, QtCore.Qt.UserRole) == visited[-1]
    assert not user.items(window)[str(pool / "toolsets" / "Blur")].isDisabled()


def test_the_walk_lists_presets_only_outside_dot_folders(rig, nuke, make_pool, user):
    pool = make_pool("main", "nodes/Grade/a.nk.nk", "nodes/Grade/x.NK", "nodes/Grade/notes.txt",
                     "top.nk", ".git/objects/old.nk", "nodes/.cache/c.nk", "toolsets/fx/")
    window = rig.show_export_window(nuke.nodes.Grade())

    items = user.items(window)
    labels = {path: item.text(0) for path, item in items.items()}
    assert labels[str(pool / "nodes" / "Grade" / "a.nk.nk")] == "a"
    assert labels[str(pool / "top.nk")] == "top"
    assert not any(".git" in p or ".cache" in p or p.endswith(("x.NK", ".txt")) for p in labels)
    assert not any(item.isDisabled() for path, item in items.items() if path.endswith(".nk"))
    # pool folder aside: nodes, Grade, toolsets, fx
    assert window.count_dirItem == 4
    assert window.widget.height() == 440


def test_thirty_folders_give_a_window_of_height_700(rig, nuke, make_pool):
    make_pool("main", "nodes/", "toolsets/", *["toolsets/c{:02d}/".format(k) for k in range(28)])
    window = rig.show_export_window("toolsets")
    assert window.count_dirItem == 30
    assert (window.widget.width(), window.widget.height()) == (600, 700)


def test_a_pool_that_is_gone_gives_an_empty_tree_and_no_folder(rig, nuke, make_pool, tmp_path):
    pool = make_pool("main", "nodes/")
    pool.joinpath("nodes").rmdir()
    pool.rmdir()
    window = rig.show_export_window(nuke.nodes.Blur())
    assert window.tree.topLevelItemCount() == 0
    assert not pool.exists()


def test_clicking_a_preset_fills_the_name_and_a_folder_leaves_it(rig, nuke, pool, user):
    window = rig.show_export_window(nuke.nodes.Grade())
    user.click(window, pool / "nodes" / "Grade" / "warm.nk")
    assert window.input_name.text() == "warm"
    user.click(window, pool / "toolsets" / "fx")
    assert window.input_name.text() == "warm"


def open_menu(window, user, path):
    user.click(window, path)
    window.tree.customContextMenuRequested.emit(QtCore.QPoint(2, 2))
    return window.tree_menu


@pytest.mark.parametrize("folder, offered", [
    ("toolsets", True),
    ("toolsets/fx", False),
    ("nodes", False),
])
def test_new_category_is_offered_on_toolsets_folders_only(rig, nuke, pool, user, folder, offered):
    window = rig.show_export_window("toolsets")
    menu = open_menu(window, user, pool / folder)
    assert menu.isVisible() == offered
    assert [a.text() for a in menu.actions()] == ["new category"]


@pytest.mark.parametrize("typed, message, made", [
    ("lookdev", None, "lookdev"),
    (" spaced ", None, " spaced "),
    ("Nodes", None, "Nodes"),
    ("nodes", "nodes is a reserved keyword. Please choose a different name.", None),
    ("toolsets", "toolsets is a reserved keyword. Please choose a different name.", None),
    ("fx", "The category name 'fx' already exists. Please choose a different name.", None),
    ("", None, None),
    (None, None, None),
])
def test_creating_a_category(rig, nuke, pool, user, messages, answer_input, typed, message, made):
    window = rig.show_export_window("toolsets")
    open_menu(window, user, pool / "toolsets")
    before = sorted(p.name for p in (pool / "toolsets").iterdir())

    seen = answer_input(typed)
    window.action_new_category.trigger()

    assert seen[0][:2] == ("new category", "new category name:")
    assert messages == ([message] if message else [])
    after = sorted(p.name for p in (pool / "toolsets").iterdir())
    assert after == sorted(before + ([made] if made else []))
    if made:
        assert str(pool / "toolsets" / made) in user.items(window)


def test_a_category_that_cannot_be_made_is_reported(rig, nuke, pool, user, messages, answer_input):
    window = rig.show_export_window("toolsets")
    (pool / "toolsets" / "taken").write_text("a file, not a folder")
    open_menu(window, user, pool / "toolsets")
    answer_input("taken/sub")
    window.action_new_category.trigger()
    assert len(messages) == 1
    assert messages[0].startswith("Error creating category folder: ")


def test_a_change_of_pool_does_not_make_the_class_folder_there(rig, nuke, make_pool, helper, user):
    first = make_pool("main", "nodes/", "toolsets/")
    second = make_pool("other", "nodes/", "toolsets/")
    window = rig.show_export_window(nuke.nodes.Blur())
    assert (first / "nodes" / "Blur").is_dir()

    window.combo_pool.setCurrentIndex(1)

    assert window.combo_pool.toolTip() == str(second)
    assert not (second / "nodes" / "Blur").exists()
    assert window.tree.currentItem() is None
    assert str(second / "nodes") in user.items(window)
    assert helper.load_settings()["current_pool"] == "other"


def test_escape_and_cancel_close_the_window(rig, nuke, pool, qtbot):
    window = rig.show_export_window(nuke.nodes.Blur())
    qtbot.keyClick(window.widget, QtCore.Qt.Key_Escape)
    assert not window.isVisible()
    window = rig.show_export_window(nuke.nodes.Blur())
    qtbot.mouseClick(window.push_cancel, QtCore.Qt.LeftButton)
    assert not window.isVisible()
