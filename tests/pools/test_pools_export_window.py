"""The export window: its tree over a pool, the marks that steer the user, the class folder it
makes and the categories a user adds."""

import pytest
from cobaltRig.qt import QtCore


@pytest.mark.parametrize("hide", [False, True])
def test_folders_are_marked_by_what_is_exported(rig, nuke, helper, make_pool, user, hide):
    pool = make_pool("main", "nodes/Grade/", "nodes/Blur/old/", "toolsets/fx/deep/",
                     "toolsets/Blur/", "misc/")
    helper.update_xml("hide_disabled_items", "True" if hide else "False")

    window = rig.show_export_window(nuke.nodes.Blur())

    # (disabled, expanded) by path below the pool
    expected = {
        "nodes": (False, True), "nodes/Blur": (False, True), "nodes/Grade": (True, False),
        "nodes/Blur/old": (True, False), "toolsets": (False, False),
        "toolsets/fx": (False, False), "toolsets/fx/deep": (True, False),
        "toolsets/Blur": (False, True),  # the class test looks at the name alone
        "misc": (True, False),
    }
    if hide:
        expected = {k: v for k, v in expected.items() if not v[0]}
    prefix = str(pool) + "/"
    items = {path: item for path, item in user.items(window).items() if path.startswith(prefix)}
    assert {p[len(prefix):]: (i.isDisabled(), i.isExpanded()) for p, i in items.items()} == expected
    assert (window.count_dirItem, window.widget.height()) == (len(expected), 400 + 10 * len(expected))
    # the last class folder visited stays current
    assert window.tree.currentItem().data(0, QtCore.Qt.UserRole) == \
        [p for p in items if p.endswith("/Blur")][-1]


def test_a_toolset_makes_no_folder_opens_toolsets_and_offers_categories_there_only(rig, pool, user):
    window = rig.show_export_window("toolsets")
    assert window.widget.windowTitle() == "Export toolsets look"
    assert window.tree.currentItem() is None and sorted((pool / "nodes").iterdir()) == [pool / "nodes" / "Grade"]
    items = user.items(window)
    assert items[str(pool / "toolsets")].isExpanded() and not items[str(pool / "nodes")].isExpanded()
    assert items[str(pool / "nodes" / "Grade")].isDisabled()
    for folder, offered in (("nodes", False), ("toolsets/fx", False), ("toolsets", True)):
        menu = user.open_menu(window, pool / folder)
        assert menu.isVisible() == offered, folder
        assert [a.text() for a in menu.actions()] == ["new category"]


def test_the_walk_lists_presets_only_outside_dot_folders(rig, nuke, make_pool, user):
    pool = make_pool("main", "nodes/Grade/a.nk.nk", "nodes/Grade/x.NK", "nodes/Grade/.nk", "nodes/Grade/notes.txt",
                     "top.nk", ".git/objects/old.nk", "nodes/.cache/c.nk", "toolsets/")
    (pool / "nodes" / "loop").symlink_to(pool)  # listed, never followed
    window = rig.show_export_window(nuke.nodes.Grade())

    labels = {path[len(str(pool)):]: item.text(0) for path, item in user.items(window).items()}
    assert labels == {"": "main", "/nodes": "nodes", "/nodes/Grade": "Grade",
                      "/nodes/Grade/a.nk.nk": "a", "/nodes/loop": "loop",
                      "/toolsets": "toolsets", "/top.nk": "top"}


@pytest.mark.parametrize("typed, message, made", [
    ("lookdev", None, "lookdev"),
    (" spaced ", None, " spaced "),
    ("Nodes", None, "Nodes"),
    ("nodes", "nodes is a reserved keyword. Please choose a different name.", None),
    ("toolsets", "toolsets is a reserved keyword. Please choose a different name.", None),
    ("fx", "The category name 'fx' already exists. Please choose a different name.", None),
    ("taken/sub", "Error creating category folder: ", None),
    ("", None, None),
    (None, None, None),
])
def test_creating_a_category(rig, pool, user, messages, answer_input, typed, message, made):
    (pool / "toolsets" / "taken").write_text("a file, not a folder")
    window = rig.show_export_window("toolsets")
    user.open_menu(window, pool / "toolsets")
    before = sorted(p.name for p in (pool / "toolsets").iterdir())

    seen = answer_input(typed)
    window.action_new_category.trigger()

    assert seen[0][:2] == ("new category", "new category name:")
    assert [text[:len(message)] for text, _ in messages] == ([message] if message else [])
    assert sorted(p.name for p in (pool / "toolsets").iterdir()) == sorted(before + [made] * bool(made))
    if made:
        assert str(pool / "toolsets" / made) in user.items(window)

