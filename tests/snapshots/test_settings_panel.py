"""The browser's settings panel: its fields, saving them, choosing and revealing the root."""

import os

import pytest
from PySide2 import QtCore, QtGui, QtWidgets

from conftest import image_size, snapshots_in

pytestmark = pytest.mark.usefixtures("browser_slot")


def settings_file_text(helper):
    with open(helper.get_settings_xml(), encoding="utf-8") as stream:
        return stream.read()


def layout_texts(layout):
    """What a row of the panel shows, left to right: label texts and widget classes."""
    shown = []
    for i in range(layout.count()):
        widget = layout.itemAt(i).widget()
        if widget is None:
            shown.append("stretch")
        elif isinstance(widget, QtWidgets.QLabel):
            shown.append(widget.text())
        else:
            shown.append(type(widget).__name__)
    return shown


def test_the_panel_shows_the_stored_settings_in_its_rows(rig, helper, snap_dir):
    helper.update_settings({"snapshot_selection": "upstream nodes",
                            "snapshot_render_width": "640",
                            "snapshotbrowser_size_custom": "800,500",
                            "snapshotbrowser_thumbnail_scrollbar": "False"})
    browser = rig.show_snapshot_browser()

    main = browser.layout_settings_main
    rows = [layout_texts(main.itemAt(i).layout()) for i in range(5)]
    assert rows == [
        ["save snapshot nodes", "QComboBox", "stretch"],
        ["snapshot render width", "QLineEdit", "stretch"],
        ["snapshot browser custom width", "QLineEdit", "height", "QLineEdit", "stretch"],
        ["snapshot browser root", "QLineEdit", "QToolButton", "QToolButton"],
        ["QCheckBox", "Show thumbnail list scroolbar"],
    ]
    assert main.itemAt(6).widget().text() == "save"
    combo = browser.combo_snapshot_selection
    assert [combo.itemText(i) for i in range(combo.count())] == [
        "all nodes", "upstream nodes", "node selection"]
    assert combo.currentText() == "upstream nodes"
    assert browser.input_snapshot_render_width.text() == "640"
    assert (browser.input_custom_width.text(), browser.input_custom_height.text()) == ("800", "500")
    assert browser.input_snapshotbrowser_root.text() == str(snap_dir.parent)
    assert not browser.check_thumbnail_scrollbar.isChecked()


@pytest.mark.parametrize("typed, acceptable", [
    ("99", False), ("100", True), ("2048", True), ("2049", False), ("abc", False)])
def test_the_render_width_accepts_100_to_2048(rig, snap_dir, typed, acceptable):
    browser = rig.show_snapshot_browser()
    validator = browser.input_snapshot_render_width.validator()
    state = validator.validate(typed, 0)[0]
    assert (state == QtGui.QValidator.Acceptable) is acceptable


def test_the_settings_button_swaps_the_panel_with_the_list_and_preview(rig, snap_dir):
    browser = rig.show_snapshot_browser()

    browser.push_settings.click()
    assert browser.show_settings and browser.group_settings.isVisible()
    assert not browser.group_thumbs.isVisible() and not browser.group_preview_image.isVisible()

    browser.push_settings.click()
    assert not browser.show_settings and not browser.group_settings.isVisible()
    assert browser.group_thumbs.isVisible() and browser.group_preview_image.isVisible()


@pytest.mark.parametrize("width, height, stored", [
    ("599", "399", "600,400"), ("600", "400", "600,400"), ("-5", " 900 ", "600,900")])
def test_saving_writes_every_field_in_one_rewrite_and_closes_the_panel(
        rig, helper, snap_dir, tmp_path, monkeypatch, width, height, stored):
    browser = rig.show_snapshot_browser()
    browser.push_settings.click()
    writes = []
    real_update = helper.update_xml
    monkeypatch.setattr(helper, "update_xml", lambda *a: (writes.append(a), real_update(*a)))
    new_root = tmp_path / "new root"

    browser.combo_snapshot_selection.setCurrentText("node selection")
    browser.input_snapshot_render_width.setText("50")
    browser.input_custom_width.setText(width)
    browser.input_custom_height.setText(height)
    browser.input_snapshotbrowser_root.setText(str(new_root))
    browser.check_thumbnail_scrollbar.setChecked(False)
    browser.push_save_settings.click()

    settings = helper.load_settings()
    assert (settings["snapshot_selection"], settings["snapshot_render_width"],
            settings["snapshotbrowser_size_custom"], settings["snapshotbrowser_root"],
            settings["snapshotbrowser_thumbnail_scrollbar"]) == (
                "node selection", "50", stored, str(new_root), "False")
    assert writes == []
    assert not browser.show_settings and browser.group_thumbs.isVisible()
    # The fields keep what was typed; the running window keeps its root.
    assert browser.input_custom_width.text() == width
    assert browser.snapshotbrowser_root == str(snap_dir.parent)


@pytest.mark.parametrize("field", ["input_custom_width", "input_custom_height"])
def test_a_size_that_is_no_number_saves_nothing_and_says_so_on_the_console(
        rig, helper, snap_dir, capsys, field):
    browser = rig.show_snapshot_browser()
    browser.push_settings.click()
    before = settings_file_text(helper)
    browser.input_snapshot_render_width.setText("1000")
    getattr(browser, field).setText("wide")

    browser.push_save_settings.click()

    assert settings_file_text(helper) == before
    assert browser.show_settings and browser.group_settings.isVisible()
    err = capsys.readouterr().err
    assert "'wide' is not a whole number" in err


def test_a_snapshot_after_saving_uses_the_saved_width_and_selection(rig, nuke, helper, snap_dir,
                                                                    comp, messages):
    browser = rig.show_snapshot_browser()
    browser.push_settings.click()
    browser.combo_snapshot_selection.setCurrentText("node selection")
    browser.input_snapshot_render_width.setText("320")
    browser.push_save_settings.click()
    comp["bars"].setSelected(True)

    browser.push_snapshot.click()

    assert messages == []
    [image] = [os.path.join(str(snap_dir), f) for f in snapshots_in(snap_dir)
               if f.endswith(".jpg")]
    assert image_size(image)[0] == 320
    nuke.scriptClear()
    nuke.nodePaste(os.path.splitext(image)[0] + ".nk")
    assert [n.Class() for n in nuke.allNodes()] == ["ColorBars"]


def test_the_root_buttons_choose_a_folder_and_reveal_the_root_the_window_was_built_with(
        rig, helper, snap_dir, tmp_path, monkeypatch):
    revealed = []
    monkeypatch.setattr(helper, "open_in_explorer",
                        lambda path, parent=None: revealed.append((path, parent is not None)))
    chosen = tmp_path / "chosen"
    chosen.mkdir()
    browser = rig.show_snapshot_browser()

    def pick():
        dialog = QtWidgets.QApplication.activeModalWidget()
        if not isinstance(dialog, QtWidgets.QFileDialog):
            QtCore.QTimer.singleShot(10, pick)
            return
        assert dialog.windowFlags() & QtCore.Qt.WindowStaysOnTopHint
        assert dialog.fileMode() == QtWidgets.QFileDialog.Directory
        dialog.selectFile(str(chosen))
        dialog.accept()

    QtCore.QTimer.singleShot(0, pick)
    browser.push_browser_snapshot_root.click()
    browser.push_reveal_snapshot_root.click()

    assert os.path.normpath(browser.input_snapshotbrowser_root.text()) == str(chosen)
    assert helper.load_settings()["snapshotbrowser_root"] == str(snap_dir.parent)
    assert revealed == [(str(snap_dir.parent), True)]
