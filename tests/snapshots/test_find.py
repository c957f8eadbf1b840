"""Finding snapshots: text typed into the field above the list and flag chips clicked, as an artist
does, and the rows they leave shown through refreshes, directory switches and the list's keys."""

import os
import threading

import pytest
from cobaltRig.qt import QtCore, QtGui, QtTest, QtWidgets

from conftest import enter, open_active, type_key
from test_table import write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")

Qt = QtCore.Qt
App = QtWidgets.QApplication
RED, GREEN = "205,60,60", "80,170,90"


@pytest.fixture
def shots(snap_dir):
    """Stem seconds to image path; the list shows them newest first: 1004 to 1001."""
    return {
        1001: write_snapshot(snap_dir, 1001, comment="Supervisor LIKED it", flag=RED),
        1002: write_snapshot(snap_dir, 1002, flag=GREEN),
        1003: write_snapshot(snap_dir, 1003, comment="liked the grain"),
        1004: write_snapshot(snap_dir, 1004),
    }


def shown(browser):
    """Seconds of the snapshots whose rows are shown, top to bottom."""
    table = browser.table_thumbs
    return [int(os.path.basename(src).split("_")[0])
            for row, src in enumerate(browser.row_sources()) if not table.isRowHidden(row)]


def ready(rig, qtbot):
    browser = open_active(rig, qtbot)
    qtbot.waitUntil(lambda: browser.find_state == "ready", timeout=5000)
    return browser


def type_into_field(browser, text):
    QtTest.QTest.mouseClick(browser.input_find, Qt.MouseButton.LeftButton)
    assert App.focusWidget() is browser.input_find
    QtTest.QTest.keyClicks(App.focusWidget(), text)


def click_chip(browser, colour):
    chip, = [c for c in browser.find_chips if c.property("flag") == colour]
    QtTest.QTest.mouseClick(chip, Qt.MouseButton.LeftButton)


@pytest.mark.parametrize("text, chip, rows", [
    ("LIKED", None, [1003, 1001]),        # the comment, whatever the case
    ("1002_comp", None, [1002]),          # the file name
    ("", RED, [1001]),
    ("", GREEN, [1002]),
    ("liked", RED, [1001]),               # both
    ("liked", GREEN, []),
    ("no such take", None, []),
])
def test_the_field_and_the_chips_show_only_the_rows_that_match(rig, shots, qtbot, text, chip,
                                                               rows):
    browser = ready(rig, qtbot)
    if text:
        type_into_field(browser, text)
    if chip:
        click_chip(browser, chip)
    assert shown(browser) == rows
    assert browser.slider_versions.maximum() == max(1, len(rows))
    if chip:
        # The chip that is on clears its flag again.
        click_chip(browser, chip)
        assert shown(browser) == ([1003, 1001] if text else [1004, 1003, 1002, 1001])


def test_the_rows_shown_follow_a_refresh_and_a_directory_switch_clears_the_find(
        rig, helper, snap_dir, shots, qtbot):
    other = snap_dir.parent / "other"
    other.mkdir()
    write_snapshot(other, 3001, comment="nothing liked here")
    write_snapshot(other, 3002)
    browser = ready(rig, qtbot)
    type_into_field(browser, "liked")
    write_snapshot(snap_dir, 1005, comment="liked as well")
    browser.populate_table_thumbs()
    assert shown(browser) == [1005, 1003, 1001]
    for path in (shots[1001], shots[1001][:-4] + ".xml", shots[1001][:-4] + ".nk"):
        os.remove(path)
    browser.populate_table_thumbs()
    assert shown(browser) == [1005, 1003]
    # Flagged the way its menu does it: the thumbnail reads its marks again.
    helper.set_flag(browser, shots[1003], RED.split(","))
    click_chip(browser, RED)
    qtbot.waitUntil(lambda: shown(browser) == [1003], timeout=2000)
    assert browser.input_find.text() == "liked"

    box = browser.combo_snapshot_dir
    box.setCurrentIndex(box.findText("other"))
    assert browser.input_find.text() == ""
    assert not any(chip.isChecked() for chip in browser.find_chips)
    assert shown(browser) == [3002, 3001]
    # What the readers found comes back through the event loop, which hasn't run yet.
    assert browser.find_state == "reading"
    type_into_field(browser, "liked")
    assert browser.label_find_state.isVisibleTo(browser.widget)
    assert shown(browser) == [3002, 3001]
    qtbot.waitUntil(lambda: shown(browser) == [3001], timeout=5000)
    assert not browser.label_find_state.isVisibleTo(browser.widget)


def test_slider_arrows_and_d_act_on_the_rows_shown(rig, helper, shots, qtbot, asked, monkeypatch):
    # A replaced metadata reader is asked on this thread only.
    threads, original = set(), helper.load_metadata
    monkeypatch.setattr(helper, "load_metadata",
                        lambda src: threads.add(threading.get_ident()) or original(src))
    browser = ready(rig, qtbot)
    type_into_field(browser, "liked")
    assert threads == {threading.get_ident()}
    table = browser.table_thumbs
    # The slider counts the rows shown: its second step is 1001, the fourth row.
    browser.slider_versions.setValue(2)
    assert browser.preview_image.image == shots[1001]
    browser.slider_versions.setValue(1)
    assert browser.preview_image.image == shots[1003]
    # Down from 1003 passes over 1002, which is hidden.
    QtTest.QTest.mouseClick(table.viewport(), Qt.MouseButton.LeftButton,
                            pos=table.visualRect(table.model().index(1, 0)).center())
    type_key(Qt.Key.Key_Down)
    assert table.currentRow() == 3
    assert browser.preview_image.image == shots[1001]
    # "d" over a selected row deletes the selection as shown, never the rows hidden.
    table.selectAll()
    enter(table.cellWidget(3, 0))
    type_key(Qt.Key.Key_D)
    assert "2 selected" in asked[-1][1]
    assert not os.path.exists(shots[1001]) and not os.path.exists(shots[1003])
    assert os.path.exists(shots[1002]) and os.path.exists(shots[1004])


def test_a_window_deleted_while_the_index_is_read_goes_quietly(rig, snap_dir, qtbot):
    for seconds in range(4000, 4600):
        (snap_dir / "{}_comp.jpg".format(seconds)).write_bytes(b"not a picture")
        (snap_dir / "{}_comp.xml".format(seconds)).write_text(
            "<snapshot><metadata><meta name=\"comment\">take {}</meta>"
            "</metadata></snapshot>".format(seconds))
    browser = rig.show_snapshot_browser()
    qtbot.waitUntil(lambda: browser.find_state != "waiting", timeout=5000)
    window = browser.widget
    rig.__dict__.pop("snapshotbrowser")
    del browser
    window.deleteLater()
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
    qtbot.wait(50)


def test_scrolling_a_found_list_shows_each_row_in_view_in_its_place_and_clearing_restores_all(
        rig, snap_dir, qtbot, asked):
    for seconds in range(1000, 1060):  # longer than the view; finding moves most rows
        write_snapshot(snap_dir, seconds, comment="keeper" if seconds % 3 == 0 else None)
    browser = ready(rig, qtbot)
    table, viewport = browser.table_thumbs, browser.table_thumbs.viewport()
    bar = table.verticalScrollBar()
    bar.setValue(bar.maximum() // 2)
    where = bar.value()
    assert where > 0
    type_into_field(browser, "keeper")
    assert shown(browser) == list(range(1059, 999, -3))
    for scroll in range(5):
        if scroll:  # a wheel notch down, as the artist scrolls
            centre = QtCore.QPointF(viewport.rect().center())
            App.sendEvent(viewport, QtGui.QWheelEvent(
                centre, QtCore.QPointF(viewport.mapToGlobal(centre.toPoint())), QtCore.QPoint(),
                QtCore.QPoint(0, -120), Qt.MouseButton.NoButton, Qt.KeyboardModifier.NoModifier,
                Qt.ScrollPhase.NoScrollPhase, False))
            App.processEvents()
        for row in range(table.rowCount()):
            rect = table.visualRect(table.model().index(row, 0))
            widget = table.cellWidget(row, 0)
            if table.isRowHidden(row) or not rect.intersects(viewport.rect()):
                assert widget.isHidden(), row
            else:
                assert widget.isVisible() and widget.geometry() == rect, row
    assert table.rowAt(0) > 9
    # Clearing the field shows every row again, where the list was before the find.
    QtTest.QTest.keyClick(App.focusWidget(), Qt.Key.Key_A, Qt.KeyboardModifier.ControlModifier)
    QtTest.QTest.keyClick(App.focusWidget(), Qt.Key.Key_Backspace)
    assert browser.input_find.text() == ""
    assert len(shown(browser)) == 60
    assert bar.value() == where
    assert browser.slider_versions.maximum() == 60
    # Keys typed into the field stay there, over a thumbnail too; Return and Escape do not.
    enter(table.cellWidget(table.rowAt(0), 0))
    type_into_field(browser, "d+-h")
    assert browser.input_find.text() == "d+-h" and asked == []
    type_key(Qt.Key.Key_Return)
    assert App.focusWidget() is browser.table_thumbs
    QtTest.QTest.mouseClick(browser.input_find, Qt.MouseButton.LeftButton)
    type_key(Qt.Key.Key_Escape)
    assert browser.fade_method == "out"
