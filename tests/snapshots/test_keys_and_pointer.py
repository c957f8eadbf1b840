"""Keys and the pointer as an artist uses them: keys to whatever widget Qt gave the focus, "d" on
the thumbnail under the pointer, drags that Qt routes itself, and the arrows in the list."""

import os

import pytest
from cobaltRig.qt import QtCore, QtGui, QtTest, QtWidgets

from conftest import enter, open_active, type_key
from test_table import select_rows, stems, write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")

Qt = QtCore.Qt
App = QtWidgets.QApplication


@pytest.fixture
def shots(snap_dir):
    """Image paths of four snapshots, as the table lists them: newest first."""
    return [write_snapshot(snap_dir, 1000 + i, size=(400, 200)) for i in range(4)][::-1]


@pytest.fixture
def dialogs():
    """Titles of the modal dialogs that opened, each closed at once: a wrong key never hangs."""
    seen = []

    def close_modal():
        box = App.activeModalWidget()
        if box is not None:
            seen.append(box.windowTitle())
            box.reject()

    timer = QtCore.QTimer()
    timer.timeout.connect(close_modal)
    timer.start(20)
    yield seen
    timer.stop()


def click_thumbnail(browser, row):
    thumb = browser.get_thumbnails_list()[row].widget
    QtTest.QTest.mouseClick(thumb, Qt.LeftButton, Qt.NoModifier, thumb.rect().center())


@pytest.mark.parametrize("clicked", [False, True], ids=["as opened", "after a click in the list"])
@pytest.mark.parametrize("key", ["+", "d", "Down"])
def test_keys_mean_the_same_wherever_the_focus_is(rig, helper, shots, asked, dialogs, qtbot,
                                                  clicked, key):
    helper.update_xml("current_snapshot_preview", shots[0])
    browser = open_active(rig, qtbot)
    if clicked:
        click_thumbnail(browser, 0)
        assert App.focusWidget() == browser.table_thumbs
    asked.answer = False
    preview = browser.preview_image
    if key == "+":
        enter(preview.widget)
    elif key == "d":
        enter(browser.get_thumbnails_list()[2].widget)

    type_key(Qt.Key_Down if key == "Down" else key)

    # The directory box never acts on a key it was not clicked for.
    assert dialogs == [] and [q[0] for q in asked if q[0] != "Delete snapshots"] == []
    assert browser.combo_snapshot_dir.currentText() == "shot"
    if key == "+":
        assert preview.scaleFactor == 1.25
    elif key == "d":
        assert [q[0] for q in asked] == ["Delete snapshots"]
    else:
        assert preview.image == shots[1] and browser.table_thumbs.currentRow() == 1


@pytest.mark.parametrize("pointer, selected, answer, gone, question", [
    # The thumbnail under the pointer goes, not the selection elsewhere.
    (2, [(0, 0)], True, [2], "Delete the snapshot '1001_comp'? This can't be undone!"),
    # On a selected row, the whole selection goes, and the question counts it.
    (1, [(0, 1), (3, 3)], True, [0, 1, 3],
     "Delete the 3 selected snapshots? This can't be undone!"),
    (1, [(0, 1)], False, [], "Delete the 2 selected snapshots? This can't be undone!"),
    # With the pointer on no thumbnail, no question and nothing goes.
    (None, [(0, 1)], True, [], None),
])
def test_d_deletes_what_the_pointer_is_on_after_one_question(rig, snap_dir, shots, asked, qtbot,
                                                             pointer, selected, answer, gone,
                                                             question):
    browser = open_active(rig, qtbot)
    click_thumbnail(browser, 0)
    select_rows(browser, *selected)
    thumbs = browser.get_thumbnails_list()
    enter(thumbs[2].widget)
    enter(thumbs[2].widget, QtCore.QEvent.Leave)
    if pointer is not None:
        enter(thumbs[pointer].widget)
    asked.answer = answer

    type_key("d")

    assert [q[1] for q in asked] == ([question] if question else [])
    kept = [image for row, image in enumerate(shots) if row not in gone]
    assert browser.row_sources() == kept
    assert stems(snap_dir) == sorted(os.path.basename(os.path.splitext(i)[0]) for i in kept)


def test_a_drag_by_the_top_bar_follows_the_pointer_across_the_preview(rig, helper, shots, qtbot):
    helper.update_settings({"current_snapshot_preview": shots[0],
                            "snapshotbrowser_size_current": "901,601"})
    browser = open_active(rig, qtbot)
    window = browser.widget
    window.move(100, 100)
    start = QtCore.QPoint(window.width() // 2, 30)
    assert window.childAt(start) is None
    # Through the window system interface, so that Qt picks each event's receiver itself.
    handle, pointer = window.windowHandle(), window.mapToGlobal(start)
    QtGui.QCursor.setPos(pointer)
    QtTest.QTest.mousePress(handle, Qt.LeftButton, Qt.NoModifier, start)
    for step in [QtCore.QPoint(0, 40)] * 4 + [QtCore.QPoint(25, -20)]:
        pointer = pointer + step
        QtGui.QCursor.setPos(pointer)
        QtTest.QTest.mouseMove(handle, window.mapFromGlobal(pointer))
        App.processEvents()
        assert window.pos() == pointer + QtCore.QPoint(-450, -30) == browser.xy
    QtTest.QTest.mouseRelease(handle, Qt.LeftButton, Qt.NoModifier, window.mapFromGlobal(pointer))

    # With the settings shown, the window hangs further below the pointer.
    browser.push_settings.click()
    App.processEvents()
    App.sendEvent(browser.group_settings, QtGui.QMouseEvent(
        QtCore.QEvent.MouseMove, QtCore.QPointF(5, 5), QtCore.QPointF(pointer), Qt.NoButton,
        Qt.LeftButton, Qt.NoModifier))
    assert window.pos() == pointer + QtCore.QPoint(-450, -300) == browser.xy


def test_alt_released_elsewhere_does_not_stick_to_the_image(rig, helper, shots, qtbot):
    helper.update_xml("current_snapshot_preview", shots[0])
    browser = open_active(rig, qtbot)
    preview = browser.preview_image
    window = browser.widget
    # Alt goes down while the preview has the keys; it comes up in another window.
    QtTest.QTest.keyPress(preview.widget, Qt.Key_Alt)
    label_before = preview.image_label.pos()
    QtGui.QCursor.setPos(QtCore.QPoint(800, 600))
    move = QtGui.QMouseEvent(QtCore.QEvent.MouseMove, QtCore.QPointF(5, 5),
                             QtCore.QPointF(800, 600), Qt.LeftButton, Qt.LeftButton,
                             Qt.NoModifier)
    App.sendEvent(preview.widget, move)

    assert preview.image_label.pos() == label_before
    assert window.pos() == QtCore.QPoint(800 - window.width() // 2, 600 - window.height() // 2)


@pytest.mark.parametrize("start, key, shown, row_after", [
    (2, "Up", 1, 1),
    # Past either end there is no row to show; the table keeps its own behaviour.
    (3, "Down", None, 3),
    (0, "Up", None, 0),
    # With no current row, Down starts at the top and Up finds nothing.
    (-1, "Down", 0, None),
    (-1, "Up", None, None),
])
def test_arrows_in_the_list_step_the_preview_through_the_rows(rig, helper, shots, tmp_path, qtbot,
                                                              start, key, shown, row_after):
    browser = rig.show_snapshot_browser()
    table = browser.table_thumbs
    table.setCurrentCell(start, 0)
    # An image that no row shows, so that a step is told apart from the start-up preview.
    elsewhere = write_snapshot(tmp_path, 5)
    browser.preview_image.set_image(elsewhere)

    qtbot.keyClick(table, getattr(Qt, "Key_" + key))

    expected = elsewhere if shown is None else shots[shown]
    assert browser.preview_image.image == expected
    assert helper.load_settings()["current_snapshot_preview"] == expected
    if row_after is not None:
        assert table.currentRow() == row_after
