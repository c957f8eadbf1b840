"""The browser's settings panel: its fields, saving them, choosing and revealing the root."""

import os

import pytest
from cobaltRig.qt import QtCore, QtGui, QtWidgets

from conftest import image_size, snapshots_in

pytestmark = pytest.mark.usefixtures("browser_slot")


def settings_file_text(helper):
    with open(helper.get_settings_xml(), encoding="utf-8") as stream:
        return stream.read()


def test_the_panel_shows_the_stored_settings_in_its_rows(rig, helper, snap_dir):
    helper.update_settings({"snapshot_selection": "upstream nodes",
                            "snapshot_render_width": "640",
                            "snapshotbrowser_size_custom": "800,500",
                            "snapshotbrowser_thumbnail_scrollbar": "False"})
    browser = rig.show_snapshot_browser()

    labels = browser.group_settings.findChildren(QtWidgets.QLabel)
    assert [label.text() for label in labels if label.text()] == [
        "save snapshot nodes", "snapshot render width", "snapshot browser custom width", "height",
        "snapshot browser root", "Show thumbnail list scroolbar"]
    assert browser.push_save_settings.text() == "save"
    combo = browser.combo_snapshot_selection
    assert [combo.itemText(i) for i in range(combo.count())] == [
        "all nodes", "upstream nodes", "node selection"]
    assert combo.currentText() == "upstream nodes"
    assert browser.input_snapshot_render_width.text() == "640"
    assert (browser.input_custom_width.text(), browser.input_custom_height.text()) == ("800", "500")
    assert browser.input_snapshotbrowser_root.text() == str(snap_dir.parent)
    assert not browser.check_thumbnail_scrollbar.isChecked()


def test_the_render_width_accepts_100_to_2048(rig, snap_dir):
    validator = rig.show_snapshot_browser().input_snapshot_render_width.validator()
    acceptable = [t for t in ("99", "100", "2048", "2049", "abc")
                  if validator.validate(t, 0)[0] == QtGui.QValidator.Acceptable]
    assert acceptable == ["100", "2048"]


def test_the_settings_button_swaps_the_panel_with_the_list_and_preview(rig, snap_dir):
    browser = rig.show_snapshot_browser()

    for shown in (True, False):
        browser.push_settings.click()
        assert browser.group_settings.isVisible() is shown
        assert browser.group_thumbs.isVisible() is browser.group_preview_image.isVisible() is (
            not shown)


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
    assert "'wide' is not a whole number" in capsys.readouterr().err


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
