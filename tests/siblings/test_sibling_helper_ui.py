"""Icons, dialogs, tree items and the other Qt services of helper."""

import os

import pytest
from cobaltRig.qt import QtCore, QtGui, QtWidgets

from cobaltRig import helper

def test_icons_exist_and_load(qapp):
    icons = helper.load_icons()
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
def test_ask_dialog_is_true_only_for_the_go_ahead_button(answer_modal, qtbot, answer, expected):
    def act(dialog):
        if answer == "close":
            dialog.close()
        elif answer in ("escape", "return"):
            key = QtCore.Qt.Key_Escape if answer == "escape" else QtCore.Qt.Key_Return
            qtbot.keyClick(dialog.focusWidget() or dialog, key)
        else:  # no such button fails the answer, and with it the test
            next(button for button in dialog.findChildren(QtWidgets.QAbstractButton)
                 if button.text().replace("&", "") == answer).click()

    answer_modal(act)
    result = helper.ask_dialog("Confirm deletion", "Delete 'shot_010'?", process_label="delete shot_010",
                               color_process="45,0,0")
    assert result is expected


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
