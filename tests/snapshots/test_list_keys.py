"""Keys of the browser's thumbnail list, pressed as a user would on a directory of real jpgs: the
arrows step the preview through the rows, "d" deletes the selected snapshots."""

import os

import pytest
from cobaltRig.qt import QtCore, QtWidgets

from test_table import select_rows, stems, write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")

Qt = QtCore.Qt


@pytest.fixture
def shots(snap_dir):
    """Image paths of three snapshots, as the table lists them: newest first."""
    return [write_snapshot(snap_dir, 1000 + i) for i in range(3)][::-1]


def remembered(helper):
    return helper.load_settings()["current_snapshot_preview"]


def send(widget, kind):
    QtWidgets.QApplication.sendEvent(widget, QtCore.QEvent(kind))


def stem(image):
    return os.path.basename(os.path.splitext(image)[0])


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


def test_down_onto_the_empty_row_of_an_unreadable_image_keeps_the_preview(rig, snap_dir, shots,
                                                                          qtbot):
    # The table lists names ending in ".jpg"; one that can't be read leaves an empty last row.
    (snap_dir / "1999_broken.jpg").write_bytes(b"not an image")
    browser = rig.show_snapshot_browser()
    table = browser.table_thumbs
    assert table.rowCount() == 4 and table.cellWidget(3, 0) is None
    table.setCurrentCell(1, 0)

    qtbot.keyClick(table, Qt.Key_Down)
    qtbot.keyClick(table, Qt.Key_Down)

    assert browser.preview_image.image == shots[2]


@pytest.mark.parametrize("target, key, pointer, selected, gone", [
    # In the list the key means the list: the selection goes, not the thumbnail under the pointer,
    # even once the pointer has left the thumbnail entered last; with none entered, nothing goes.
    ("list", "d", "over", [(0, 0), (2, 2)], [0, 2]),
    ("list", "d", "left", [(0, 0), (2, 2)], [0, 2]),
    ("list", "d", "never", [(0, 0), (2, 2)], []),
    # Elsewhere in the window it deletes only with the pointer over the list.
    ("window", "d", "over", [(1, 1)], [1]),
    ("window", "d", "left", [(1, 1)], []),
    ("window", "D", "over", [(1, 1)], []),
], ids=["list", "list after leaving", "list never entered", "window", "window after leaving",
        "window shift"])
def test_d_deletes_the_selected_snapshots(rig, snap_dir, shots, qtbot, target, key, pointer,
                                          selected, gone):
    browser = rig.show_snapshot_browser()
    thumb = browser.get_thumbnails_list()[1].widget
    if pointer != "never":
        send(thumb, QtCore.QEvent.Enter)
    if pointer == "left":
        send(thumb, QtCore.QEvent.Leave)
    select_rows(browser, *selected)

    qtbot.keyClick(browser.table_thumbs if target == "list" else browser.widget, key)

    kept = [image for row, image in enumerate(shots) if row not in gone]
    assert stems(snap_dir) == sorted(stem(image) for image in kept)
    assert browser.row_sources() == kept


def test_d_in_the_list_does_nothing_once_the_entered_thumbnail_is_gone(rig, snap_dir, shots,
                                                                       qtbot):
    browser = rig.show_snapshot_browser()
    send(browser.get_thumbnails_list()[0].widget, QtCore.QEvent.Enter)
    select_rows(browser, (0, 0))
    browser.get_thumbnails_list()[0].delete_snapshot()
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
    select_rows(browser, (0, 1))

    qtbot.keyClick(browser.table_thumbs, "d")

    assert browser.row_sources() == shots[1:]
    assert stems(snap_dir) == sorted(stem(image) for image in shots[1:])
