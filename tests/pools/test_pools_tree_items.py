"""How the pool trees make their items: natively while `helper.build_tree_widget_item` is the
package's own, through a studio's replacement when there is one, and never leaving a script with
an item object that points at freed memory."""

import pytest
from cobaltRig.qt import QtCore, QtWidgets


def states(window, user):
    """What a user sees of every item: label, icon, state and where its row is on screen."""
    window.widget.show()
    QtWidgets.QApplication.processEvents()
    return {path: (item.text(0), item.icon(0).pixmap(16, 16).toImage(), item.isDisabled(),
                   item.isSelected(), item.isExpanded(), window.tree.visualItemRect(item))
            for path, item in user.items(window).items()}


@pytest.mark.parametrize("open_window", [
    lambda rig, nuke: rig.show_export_window(nuke.nodes.Blur()),
    lambda rig, nuke: rig.import_preset(),
])
def test_a_replaced_item_builder_makes_every_item_as_before_and_a_non_item_is_refused(
        rig, nuke, helper, make_pool, user, monkeypatch, open_window):
    make_pool("main", "nodes/Blur/soft.nk", "nodes/Grade/warm.nk", "toolsets/fx/glow.nk", "top.nk")
    native = states(open_window(rig, nuke), user)

    calls = []
    original = helper.build_tree_widget_item

    def studio_builder(parent, label, path, disabled, selected, **keywords):
        calls.append((label, path.rsplit("/", 1)[-1], disabled, selected, keywords))
        item = original(parent, label, path, disabled, selected, **keywords)
        item.setToolTip(0, "studio")
        return item

    monkeypatch.setattr(helper, "build_tree_widget_item", studio_builder)
    window = open_window(rig, nuke)

    assert len(calls) == len(native) and states(window, user) == native
    assert all(item.toolTip(0) == "studio" for item in user.items(window).values())
    # the keywords the tree passes are the ones the item's kind calls for, no more
    by_label = {label: keywords for label, _, _, _, keywords in calls}
    assert by_label["soft"] == {} and by_label["main"]["is_dir"] is True
    assert set(by_label["Blur"]) == {"expanded", "is_dir", "icon"}

    monkeypatch.setattr(helper, "build_tree_widget_item", original)
    calls.clear()
    window.populate_tree()
    assert calls == [] and states(window, user) == native

    monkeypatch.setattr(helper, "build_tree_widget_item", lambda *args, **kwargs: None)
    with pytest.raises(TypeError, match="not a QTreeWidgetItem"):
        open_window(rig, nuke)


def test_an_item_held_by_a_script_across_a_rebuild_fails_cleanly(rig, pool, user):
    window = rig.import_preset()
    held = [window.dirlist[str(pool / "nodes")], window.tree.topLevelItem(0),
            user.items(window)[str(pool / "nodes" / "Grade" / "warm.nk")]]
    window.populate_tree()
    for item in held:
        with pytest.raises(RuntimeError, match="already deleted"):
            item.text(0)
    assert window.dirlist[str(pool / "nodes")].text(0) == "nodes"


def test_the_helper_still_makes_items_for_any_tree(qtbot, helper):
    tree = QtWidgets.QTreeWidget()
    qtbot.addWidget(tree)
    top = helper.build_tree_widget_item(tree, "pool", "/p", False, True, is_dir=True, expanded=True)
    child = helper.build_tree_widget_item(top, "soft", "/p/soft.nk", True, False)
    assert (top.isSelected(), top.isExpanded(), top.isDisabled()) == (True, True, False)
    # Items without an icon of their own still get one: a folder, or a preset file.
    assert not top.icon(0).isNull() and top.icon(0).cacheKey() != child.icon(0).cacheKey()
    del top
    assert tree.topLevelItem(0).child(0) is child and child.data(0, QtCore.Qt.UserRole) == "/p/soft.nk"
    assert child.text(0) == "soft" and child.isDisabled() and not child.icon(0).isNull()
    tree.clear()
    with pytest.raises(RuntimeError):
        child.text(0)
