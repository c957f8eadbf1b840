"""Snapshots whose image can't be shown keep their row: a "cannot read" tile that names the file
and says why, and so does the preview; a real one-pixel image is no such case. Images whose header
lies about their size are tried in a child process, in tests/faults."""

import pytest
from cobaltRig.qt import QtCore, QtWidgets

from conftest import enter
from test_table import write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")


def test_every_listed_snapshot_keeps_its_row_and_the_preview_says_which_cannot_be_read(
        rig, snap_dir, helper, qtbot):
    good = write_snapshot(snap_dir, 1000)
    dot = write_snapshot(snap_dir, 1001, size=(1, 1))
    (snap_dir / "1002_broken.jpg").write_bytes(b"not an image")
    (snap_dir / "2000_upper.JPG").write_bytes(open(good, "rb").read())
    (snap_dir / "2001_folder.jpg").mkdir()
    helper.update_xml("snapshotbrowser_size_current", "900,800")

    browser = rig.show_snapshot_browser()
    QtWidgets.QApplication.processEvents()

    table = browser.table_thumbs
    thumbs = browser.get_thumbnails_list()
    assert browser.row_sources() == [str(snap_dir / "1002_broken.jpg"), dot, good]
    assert table.rowCount() == 3 and None not in thumbs
    # The slider counts every name ending in ".jpg": the broken image and the folder too.
    assert browser.slider_versions.maximum() == 4 and browser.slider_versions.isVisible()
    tile, dot_row, good_row = thumbs
    assert tile.widget.text() == "cannot read" and tile.pixmap.isNull()
    assert tile.widget.toolTip() == "cannot read 1002_broken.jpg: " + tile.cannot_read
    assert tile.cannot_read and table.rowHeight(0) == 100
    # A one-pixel image is an image: shown in a square row.
    assert dot_row.cannot_read == "" and not dot_row.pixmap.isNull()
    assert table.rowHeight(1) == 200 and good_row.pixmap.size().toTuple() == (200, 100)

    # An arrow onto the broken one shows why in the preview, which then has nothing to zoom.
    table.setCurrentCell(1, 0)
    preview = browser.preview_image
    preview.set_image(good)
    # Arrows over the preview scroll it; where an earlier test left the pointer must not matter.
    enter(preview.widget, QtCore.QEvent.Leave)
    qtbot.keyClick(table, QtCore.Qt.Key_Up)
    pixmap = preview.image_label.pixmap()
    assert preview.image == str(snap_dir / "1002_broken.jpg") and preview.isVisible()
    assert (pixmap is None or pixmap.isNull()) and preview.image_label.text() == "cannot read"
    assert preview.image_label.toolTip().startswith("cannot read 1002_broken.jpg: ")
    preview.zoom_in()
    assert preview.scaleFactor == 1.0
