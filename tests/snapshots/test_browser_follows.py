"""What the browser shows follows what the artist did last: the root saved in the panel, the
directory chosen, the window's size, and the rows that a refresh keeps."""

import os

import pytest
from cobaltRig.qt import QtCore, QtWidgets

from test_table import move_action, select_rows, write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")


def choose(browser, text):
    box = browser.combo_snapshot_dir
    box.setCurrentIndex(box.findText(text))
    QtWidgets.QApplication.processEvents()


def test_a_move_after_the_root_was_changed_in_the_panel_goes_to_the_new_root(
        rig, helper, snap_dir, tmp_path):
    src = write_snapshot(snap_dir, 1000, comment="c")
    new_root = tmp_path / "new root"
    (new_root / "elsewhere").mkdir(parents=True)
    browser = rig.show_snapshot_browser()
    browser.push_settings.click()
    browser.input_snapshotbrowser_root.setText(str(new_root))
    browser.push_save_settings.click()
    select_rows(browser, (0, 0))

    move_action(browser.get_thumbnails_list()[0], "elsewhere").trigger()

    assert sorted(os.listdir(str(new_root / "elsewhere"))) == [
        "1000_comp.jpg", "1000_comp.nk", "1000_comp.xml"]
    assert not os.path.exists(src) and browser.row_sources() == []


def test_switching_directory_brings_the_slider_and_the_preview_along(rig, helper, snap_dir):
    root = snap_dir.parent
    first = [write_snapshot(snap_dir, 1000 + i) for i in range(3)][::-1]
    (root / "b").mkdir()
    (root / "empty").mkdir()
    second = write_snapshot(root / "b", 2000)
    browser = rig.show_snapshot_browser()
    assert browser.slider_versions.maximum() == 3
    assert browser.slider_versions.value() == 1 and browser.preview_image.image == first[0]

    choose(browser, "b")

    assert browser.slider_versions.maximum() == 1
    assert browser.preview_image.image == second and browser.preview_image.isVisible()
    assert helper.load_settings()["current_snapshot_preview"] == second

    choose(browser, "empty")

    assert browser.row_sources() == [] and browser.slider_versions.maximum() == 0
    assert browser.preview_empty.isVisible() and not browser.preview_image.isVisible()

    choose(browser, "shot")

    assert browser.slider_versions.maximum() == 3 and browser.preview_image.image == first[0]


def test_a_window_opened_without_a_directory_lays_out_the_rows_of_the_one_chosen(
        rig, helper, snap_dir):
    for i in range(3):
        write_snapshot(snap_dir, 1000 + i, size=(400, 200))
    helper.update_settings({"current_snapshot_dir": None, "current_snapshot_preview": None,
                            "snapshotbrowser_size_current": "900,600"})
    browser = rig.show_snapshot_browser()
    assert browser.row_sources() == []

    choose(browser, "shot")

    table = browser.table_thumbs
    width = table.viewport().width()
    assert abs(table.columnWidth(0) - width) <= 1
    for row, thumb in enumerate(browser.get_thumbnails_list()):
        assert table.rowHeight(row) == 200 * table.columnWidth(0) // 400
        assert thumb.widget.pixmap().width() == table.columnWidth(0)


def test_the_window_size_is_stored_when_it_closes_without_a_preview(rig, helper, snap_dir):
    helper.update_xml("current_snapshot_preview", None)
    browser = rig.show_snapshot_browser()

    browser.widget.resize(1040, 640)
    QtWidgets.QApplication.processEvents()
    browser.push_close.click()

    assert helper.load_settings()["snapshotbrowser_size_current"] == "1040,640"


def test_a_refresh_keeps_the_thumbnails_of_snapshots_still_listed(rig, helper, snap_dir):
    for i in range(6):
        write_snapshot(snap_dir, 1000 + i)
    browser = rig.show_snapshot_browser()
    kept = browser.get_thumbnails_list()
    sources = [t.get_src() for t in kept]
    gone = sources[3]  # 1002
    for path in (gone, gone[:-4] + ".nk"):
        os.remove(path)
    added = write_snapshot(snap_dir, 3000, comment="new")
    write_snapshot(snap_dir, 1003, comment="now commented")

    browser.populate_table_thumbs()
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)

    assert browser.row_sources() == [added] + [s for s in sources if s != gone]
    for thumb, src in zip(kept, sources):
        if src == gone:
            with pytest.raises(RuntimeError, match="window was closed"):
                thumb.get_src()
        else:
            assert thumb.get_src() == src
    # A kept row shows what its files hold now.
    [commented] = [t for t, src in zip(kept, sources) if src.endswith("1003_comp.jpg")]
    assert commented.widget.toolTip() == "now commented"
    assert not commented.label_comment.isHidden()
    assert browser.get_thumbnails_list()[0].widget.toolTip() == "new"
