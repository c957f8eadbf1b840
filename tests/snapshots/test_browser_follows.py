"""What the browser shows follows what the artist did last: the directory chosen, and the rows
that a refresh keeps."""

import os

import pytest
from cobaltRig.qt import QtCore

from conftest import rows_follow_the_column
from test_directories import choose
from test_table import write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")


def test_a_window_opened_without_a_directory_lays_out_the_rows_of_the_one_chosen(
        rig, helper, snap_dir):
    for i in range(3):
        write_snapshot(snap_dir, 1000 + i, size=(400, 200))
    helper.update_settings({"current_snapshot_dir": None, "current_snapshot_preview": None,
                            "snapshotbrowser_size_current": "1200,800"})
    browser = rig.show_snapshot_browser()

    choose(browser, "shot")

    table = browser.table_thumbs
    assert abs(table.columnWidth(0) - table.viewport().width()) <= 1
    rows_follow_the_column(browser, 400, 200)
    # When the column grows, the pixels are read again at the new width, not blown up.
    browser.splitter.setSizes([500, 700])
    browser.adjust_splitter_sizes()
    assert rows_follow_the_column(browser, 400, 200) > 300


def test_a_refresh_keeps_the_thumbnails_of_snapshots_still_listed(rig, snap_dir):
    for i in range(6):
        write_snapshot(snap_dir, 1000 + i)
    browser = rig.show_snapshot_browser()
    kept = browser.get_thumbnails_list()
    sources = [t.get_src() for t in kept]
    gone = sources.pop(3)
    os.remove(gone)
    added = write_snapshot(snap_dir, 3000, comment="new")
    write_snapshot(snap_dir, 1003, comment="now commented")

    browser.populate_table_thumbs()
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)

    # Only the row that went says so; a new row made where an old one was has its own object.
    assert browser.row_sources() == [added] + sources
    with pytest.raises(RuntimeError, match="window was closed"):
        kept.pop(3).get_src()
    assert [t.get_src() for t in kept] == sources
    assert kept[2].widget.toolTip() == "now commented" and not kept[2].label_comment.isHidden()
    assert browser.get_thumbnails_list()[0].widget.toolTip() == "new"
