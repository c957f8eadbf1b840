"""The browser's settings panel: its fields, saving them, choosing and revealing the root."""

import os
import pathlib

import pytest
from cobaltRig.qt import QtCore, QtWidgets

from conftest import image_size, snapshots_in

pytestmark = pytest.mark.usefixtures("browser_slot")


@pytest.mark.parametrize("width, height, stored, scrollbar", [
    ("599", "399", "600,400", False), ("600", "400", "600,400", True),
    ("-5", " 900 ", "600,900", False),
    # A size that is no number saves nothing and says so on the console.
    ("wide", "400", None, False), ("600", "wide", None, True)])
def test_the_panel_shows_the_stored_settings_and_saves_every_field_in_one_rewrite_and_closes(
        rig, helper, snap_dir, tmp_path, monkeypatch, capsys, width, height, stored, scrollbar):
    helper.update_settings({"snapshot_selection": "upstream nodes",
                            "snapshot_render_width": "640",
                            "snapshotbrowser_size_custom": "800,500",
                            "snapshotbrowser_thumbnail_scrollbar": str(scrollbar)})
    browser = rig.show_snapshot_browser()
    browser.push_settings.click()
    combo = browser.combo_snapshot_selection
    assert [combo.itemText(i) for i in range(combo.count())] == [
        "all nodes", "upstream nodes", "node selection"]
    assert combo.currentText() == "upstream nodes"
    assert browser.input_snapshot_render_width.text() == "640"
    assert (browser.input_custom_width.text(), browser.input_custom_height.text()) == ("800", "500")
    assert browser.input_snapshotbrowser_root.text() == str(snap_dir.parent)
    assert browser.check_thumbnail_scrollbar.isChecked() is scrollbar
    settings_file = pathlib.Path(helper.get_settings_xml())
    before = settings_file.read_bytes()
    writes = []
    real_update = helper.update_xml
    monkeypatch.setattr(helper, "update_xml", lambda *a: (writes.append(a), real_update(*a)))
    new_root = tmp_path / "new root"

    browser.combo_snapshot_selection.setCurrentText("node selection")
    browser.input_snapshot_render_width.setText("50")
    browser.input_custom_width.setText(width)
    browser.input_custom_height.setText(height)
    browser.input_snapshotbrowser_root.setText(str(new_root))
    browser.check_thumbnail_scrollbar.setChecked(not scrollbar)
    browser.push_save_settings.click()

    if stored is None:
        assert settings_file.read_bytes() == before
        assert browser.show_settings and browser.group_settings.isVisible()
        assert not browser.group_thumbs.isVisible() and not browser.group_preview_image.isVisible()
        assert "'wide' is not a whole number" in capsys.readouterr().err
        return
    settings = helper.load_settings()
    assert (settings["snapshot_selection"], settings["snapshot_render_width"],
            settings["snapshotbrowser_size_custom"], settings["snapshotbrowser_root"],
            settings["snapshotbrowser_thumbnail_scrollbar"]) == (
                "node selection", "50", stored, str(new_root), str(not scrollbar))
    assert writes == []
    assert not browser.show_settings and not browser.group_settings.isVisible()
    assert browser.group_thumbs.isVisible() and browser.group_preview_image.isVisible()
    # The fields keep what was typed; the running window keeps its root.
    assert browser.input_custom_width.text() == width
    assert browser.snapshotbrowser_root == str(snap_dir.parent)


def test_the_camera_after_saving_uses_the_saved_width_and_selection_and_shows_the_snapshot(
        rig, nuke, helper, snap_dir, comp, messages):
    browser = rig.show_snapshot_browser()
    assert browser.row_sources() == []
    browser.push_settings.click()
    browser.combo_snapshot_selection.setCurrentText("upstream nodes")
    browser.input_snapshot_render_width.setText("320")
    browser.push_save_settings.click()
    comp["bars"].setSelected(True)

    browser.push_snapshot.click()

    assert messages == []
    [image] = [os.path.join(str(snap_dir), f) for f in snapshots_in(snap_dir)
               if f.endswith(".jpg")]
    assert image_size(image)[0] == 320
    assert browser.row_sources() == [image]
    assert browser.preview_image.image == image and browser.preview_image.isVisible()
    # With the browser there, the old selection comes back beside the nodes saved.
    assert sorted(n.name() for n in nuke.selectedNodes()) == ["CheckerBoard1", "ColorBars1",
                                                              "Grade1"]
    nuke.scriptClear()
    nuke.nodePaste(os.path.splitext(image)[0] + ".nk")
    assert sorted(n.Class() for n in nuke.allNodes()) == ["CheckerBoard2", "Grade"]


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
