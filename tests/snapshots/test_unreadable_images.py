"""Snapshots whose image can't be shown keep their row: a "cannot read" tile that names the file
and says why, which can still be deleted like any other; a real one-pixel image is no such case.
Images whose header lies about their size are tried in a child process, in tests/faults."""

import pytest
from cobaltRig.qt import QtWidgets

from test_table import write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")


def test_every_listed_snapshot_keeps_its_row(rig, snap_dir, helper):
    good = write_snapshot(snap_dir, 1000)
    dot = write_snapshot(snap_dir, 1001, size=(1, 1))
    (snap_dir / "1002_broken.jpg").write_bytes(b"not an image")
    helper.update_xml("snapshotbrowser_size_current", "900,800")

    browser = rig.show_snapshot_browser()
    QtWidgets.QApplication.processEvents()

    table = browser.table_thumbs
    thumbs = browser.get_thumbnails_list()
    assert browser.row_sources() == [str(snap_dir / "1002_broken.jpg"), dot, good]
    assert table.rowCount() == 3 and None not in thumbs
    tile, dot_row, good_row = thumbs
    assert tile.widget.text() == "cannot read" and tile.pixmap.isNull()
    assert tile.widget.toolTip() == "cannot read 1002_broken.jpg: " + tile.cannot_read
    assert tile.cannot_read and table.rowHeight(0) == 100
    # A one-pixel image is an image: shown in a square row.
    assert dot_row.cannot_read == "" and not dot_row.pixmap.isNull()
    assert table.rowHeight(1) == 200 and good_row.pixmap.size().toTuple() == (200, 100)


def test_the_preview_says_when_it_cannot_read_an_image(rig, snap_dir, helper):
    broken = snap_dir / "1002_broken.jpg"
    broken.write_bytes(b"not an image")
    browser = rig.show_snapshot_browser()
    preview = browser.preview_image

    preview.set_image(str(broken))

    pixmap = preview.image_label.pixmap()
    assert preview.isVisible() and (pixmap is None or pixmap.isNull())
    assert preview.image_label.text() == "cannot read"
    assert preview.image_label.toolTip().startswith("cannot read 1002_broken.jpg: ")
    preview.zoom_in()
    assert preview.scaleFactor == 1.0
