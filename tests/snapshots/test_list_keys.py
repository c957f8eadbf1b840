"""Keys of the browser's thumbnail list, pressed on a directory of real jpgs: the arrows step the
preview through the rows. "d" and keys from other widgets are in test_keys_and_pointer."""

import pytest
from cobaltRig.qt import QtCore

from test_table import write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")

Qt = QtCore.Qt


@pytest.fixture
def shots(snap_dir):
    """Image paths of three snapshots, as the table lists them: newest first."""
    return [write_snapshot(snap_dir, 1000 + i) for i in range(3)][::-1]


def remembered(helper):
    return helper.load_settings()["current_snapshot_preview"]


@pytest.mark.parametrize("start, key, shown, row_after", [
    (0, "Down", 1, 1),
    (2, "Up", 1, 1),
    # Past either end there is no row to show; the table keeps its own behaviour.
    (2, "Down", None, 2),
    (0, "Up", None, 0),
    # With no current row, Down starts at the top and Up finds nothing.
    (-1, "Down", 0, None),
    (-1, "Up", None, None),
])
def test_arrows_in_the_list_step_the_preview_through_the_rows(rig, helper, snap_dir, shots,
                                                              tmp_path, qtbot, start, key, shown,
                                                              row_after):
    browser = rig.show_snapshot_browser()
    table = browser.table_thumbs
    table.setCurrentCell(start, 0)
    # An image that no row shows, so that a step is told apart from the start-up preview.
    elsewhere = write_snapshot(tmp_path, 5)
    browser.preview_image.set_image(elsewhere)

    qtbot.keyClick(table, getattr(Qt, "Key_" + key))

    if shown is None:
        assert browser.preview_image.image == elsewhere == remembered(helper)
    else:
        assert browser.preview_image.image == shots[shown] == remembered(helper)
    if row_after is not None:
        assert table.currentRow() == row_after


def test_down_onto_an_image_that_cannot_be_read_says_so_in_the_preview(rig, snap_dir, shots,
                                                                       qtbot):
    # The table lists names ending in ".jpg"; one that can't be read keeps its row as a tile.
    broken = snap_dir / "0999_broken.jpg"
    broken.write_bytes(b"not an image")
    browser = rig.show_snapshot_browser()
    table = browser.table_thumbs
    assert table.rowCount() == 4 and table.cellWidget(3, 0) is not None
    table.setCurrentCell(1, 0)

    qtbot.keyClick(table, Qt.Key_Down)
    qtbot.keyClick(table, Qt.Key_Down)

    preview = browser.preview_image
    pixmap = preview.image_label.pixmap()
    assert preview.image == str(broken) and preview.isVisible()
    assert (pixmap is None or pixmap.isNull()) and preview.image_label.text() == "cannot read"
    assert preview.image_label.toolTip().startswith("cannot read 0999_broken.jpg: ")
    preview.zoom_in()
    assert preview.scaleFactor == 1.0
