"""Icons, dialogs, tree items and the other Qt services of helper."""

import os

import pytest
from cobaltRig.qt import QtCore, QtGui, QtWidgets

from cobaltRig import helper

# Every icon key that a window of the tool asks for.
ICON_KEYS = (
    "icon_comment icon_delete icon_delete_all icon_delete_selected icon_edit icon_explorer icon_eye "
    "icon_flag icon_folder icon_folder_white icon_half icon_help icon_insert icon_insert_img "
    "icon_insert_nk icon_logo_grey icon_maximize icon_minus icon_nocolor icon_nodes icon_plus icon_pool "
    "icon_refresh icon_reveal icon_settings icon_snapshot icon_toolsets icon_x"
).split()


def test_icons_exist_and_load(qapp):
    icons = helper.load_icons()
    assert set(ICON_KEYS) <= set(icons)
    for key, path in icons.items():
        assert not QtGui.QImage(path).isNull(), key
    # Look buttons name their pictures by bare file name, beside one line of text.
    for name in ("look_star", "look_update", "look_delete", "look_import", "look_export"):
        image = QtGui.QImage(os.path.join(helper.ICONS_DIR, name + ".png"))
        assert not image.isNull() and image.height() <= 24, name


def test_uids_are_unique_and_fit_between_single_quotes():
    uids = [helper.create_uid() for _ in range(2000)]
    assert len(set(uids)) == len(uids)
    assert not any("'" in uid or "\\" in uid for uid in uids)


@pytest.mark.parametrize("name, fmt, size", [
    ("image.png", "PNG", (37, 19)), ("image.jpg", "JPG", (640, 360)),
    ("missing.jpg", None, (1, 1)), ("broken.jpg", b"not an image", (1, 1)),
])
def test_image_size_from_the_header(qapp, tmp_path, name, fmt, size):
    path = tmp_path / name
    if isinstance(fmt, bytes):
        path.write_bytes(fmt)
    elif fmt:
        image = QtGui.QImage(size[0], size[1], QtGui.QImage.Format_RGB32)
        image.fill(QtGui.QColor("teal"))
        assert image.save(str(path), fmt)
    assert helper.get_image_size(str(path)) == size


@pytest.mark.parametrize(
    "answer, expected",
    [("delete shot_010", True), ("cancel", False), ("escape", False), ("return", False), ("close", False)],
)
def test_ask_dialog_is_true_only_for_the_go_ahead_button(answer_modal, click_button, qtbot, answer, expected):
    def act(dialog):
        if answer == "close":
            dialog.close()
        elif answer in ("escape", "return"):
            key = QtCore.Qt.Key_Escape if answer == "escape" else QtCore.Qt.Key_Return
            qtbot.keyClick(dialog.focusWidget() or dialog, key)
        else:
            click_button(answer)(dialog)

    answer_modal(act)
    result = helper.ask_dialog("Confirm deletion", "Delete 'shot_010'?", process_label="delete shot_010",
                               color_process="45,0,0")
    assert result is expected


def test_tree_items_carry_label_path_and_state(qtbot):
    tree = QtWidgets.QTreeWidget()
    qtbot.addWidget(tree)
    icons = helper.load_icons()
    build = helper.build_tree_widget_item
    pool = build(tree, "pool", "/p/pool", False, False, is_dir=True, icon=icons["icon_pool"])
    pool.setExpanded(True)
    nodes = build(pool, "nodes", "/p/pool/nodes", False, False, expanded=True, is_dir=True,
                  icon=icons["icon_nodes"])
    blur = build(nodes, "Blur", "/p/pool/nodes/Blur", False, True, expanded=True, is_dir=True, icon="")
    other = build(nodes, "Grade", "/p/pool/nodes/Grade", True, False, expanded=False, is_dir=True, icon="")
    preset = build(blur, "soft", "/p/pool/nodes/Blur/soft.nk", False, False)
    assert tree.topLevelItem(0) is pool and pool.child(0) is nodes and blur.child(0) is preset
    assert (preset.text(0), preset.data(0, QtCore.Qt.UserRole)) == ("soft", "/p/pool/nodes/Blur/soft.nk")
    assert (blur.isSelected(), blur.isExpanded(), blur.isDisabled()) == (True, True, False)
    assert (other.isSelected(), other.isExpanded(), other.isDisabled()) == (False, False, True)
    # Items without an icon of their own still get one: a folder, or a preset file.
    assert not blur.icon(0).isNull() and not preset.icon(0).isNull()
    assert preset.icon(0).cacheKey() != blur.icon(0).cacheKey()


def test_tooltips_go_to_widgets_with_a_known_tt_property(qtbot):
    window = QtWidgets.QWidget()
    qtbot.addWidget(window)
    inner = QtWidgets.QLineEdit(QtWidgets.QWidget(window))
    inner.setProperty("tt", "snapshot_render_width")
    unknown = QtWidgets.QLabel(window)
    unknown.setProperty("tt", "no_such_key")
    unknown.setToolTip("kept")
    plain = QtWidgets.QLabel(window)
    helper.load_tooltips(window, "snapshot_browser")
    assert inner.toolTip() == helper.TOOLTIPS["snapshot_browser"]["snapshot_render_width"]
    assert unknown.toolTip() == "kept" and plain.toolTip() == ""


def test_open_in_explorer_opens_the_folder_of_a_file(tmp_path, monkeypatch):
    opened, messages = [], []
    monkeypatch.setattr(QtGui.QDesktopServices, "openUrl", lambda url: opened.append(url.toLocalFile()))
    monkeypatch.setattr(helper, "show_message_box", lambda parent, text: messages.append(text))
    preset = tmp_path / "soft.nk"
    preset.write_text("x")
    helper.open_in_explorer(str(preset))
    helper.open_in_explorer(str(tmp_path))
    helper.open_in_explorer(str(tmp_path / "gone" / "x.nk"))
    assert opened == [str(tmp_path), str(tmp_path)]
    assert len(messages) == 1 and "gone" in messages[0]
