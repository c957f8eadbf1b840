"""Comparing in the preview: two snapshots in a wipe driven by keys, its menu and its line, and the
viewer now against the remembered preview, which leaves no file and no change in the script."""

import os

import pytest
from cobaltRig.qt import QtCore, QtGui, QtTest, QtWidgets

from conftest import enter, open_active, snapshots_in, type_key
from test_table import write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")

Qt = QtCore.Qt
App = QtWidgets.QApplication
RED, BLUE = QtGui.QColor(220, 30, 30), QtGui.QColor(30, 40, 220)
NOTHING = "There is no snapshot in the preview to compare with. Show one there first."


def colour_at(preview, x, y=0.5):
    """Which of the two colours the pane shows at a part of the image's width and height."""
    label = preview.image_label
    pixel = label.grab().toImage().pixelColor(int(x * (label.width() - 1)),
                                              int(y * (label.height() - 1)))
    for name, colour in (("A", RED), ("B", BLUE)):
        if all(abs(a - b) < 40 for a, b in zip(pixel.getRgb()[:3], colour.getRgb()[:3])):
            return name
    return None


def choose(pane, action_name):
    """Opens the pane's menu and clicks the entry, as the artist does."""
    pane.show_right_click_menu()
    menu, action = pane.menu_main, getattr(pane, action_name)
    QtTest.QTest.qWaitForWindowExposed(menu)
    QtTest.QTest.mouseClick(menu, Qt.MouseButton.LeftButton, Qt.KeyboardModifier.NoModifier,
                            menu.actionGeometry(action).center())
    App.processEvents()


def drag(widget, start, end):
    """Through the window system interface, so that Qt picks each event's receiver itself."""
    window, button = widget.window(), Qt.MouseButton.LeftButton
    none = Qt.KeyboardModifier.NoModifier
    handle = window.windowHandle()
    QtTest.QTest.mousePress(handle, button, none, widget.mapTo(window, start))
    QtTest.QTest.mouseMove(handle, widget.mapTo(window, end))
    QtTest.QTest.mouseRelease(handle, button, none, widget.mapTo(window, end))
    App.processEvents()


@pytest.fixture
def pair(snap_dir, helper, request):
    """A red snapshot in the preview and a blue one beside it, with a comment; both 400 x 200
    unless the test gives the blue one's size."""
    blue = write_snapshot(snap_dir, 2000, getattr(request, "param", (400, 200)), color=BLUE,
                          comment="the one the supervisor liked, with more words")
    red = write_snapshot(snap_dir, 1000, (400, 200), color=RED)
    helper.update_xml("current_snapshot_preview", red)
    return red, blue


@pytest.fixture
def temp(tmp_path, monkeypatch):
    """The system's temporary directory, of the test's own."""
    monkeypatch.setenv("TMPDIR", str(tmp_path / "temp"))
    (tmp_path / "temp").mkdir()
    return tmp_path / "temp"


@pytest.mark.parametrize("how", ["c key", "menu"])
@pytest.mark.parametrize("pair, below_b", [((400, 200), "B"), ((200, 50), None)],
                         ids=["same size", "B flatter"], indirect=["pair"])
def test_c_or_the_menu_shows_a_left_of_the_line_and_b_right_at_a_width(
        rig, pair, helper, qtbot, how, below_b):
    browser = open_active(rig, qtbot)
    preview = browser.preview_image
    thumb = browser.get_thumbnails_list()[0]
    # A click keeps selecting rows as before.
    QtTest.QTest.mouseClick(thumb.widget, Qt.MouseButton.LeftButton)
    if how == "c key":
        enter(thumb.widget)
        type_key("c")
    else:
        choose(thumb, "action_compare")

    assert preview.comparing and browser.table_thumbs.currentRow() == 0
    assert [colour_at(preview, x, 0.1) for x in (0.25, 0.75)] == ["A", "B"]
    # B is scaled to A's width: a flatter B ends above A's bottom.
    assert colour_at(preview, 0.75, 0.95) == below_b
    assert preview.label_compare_a.text() == "1000_comp.jpg"
    assert preview.label_compare_b.toolTip() == ("2000_comp.jpg: the one the supervisor liked, "
                                                 "with more\u2026")
    assert helper.load_settings()["current_snapshot_preview"] == pair[0]


def test_the_line_drags_w_hides_b_s_swaps_and_escape_ends_then_closes(rig, pair, qtbot):
    browser = open_active(rig, qtbot)
    preview = browser.preview_image
    enter(browser.get_thumbnails_list()[0].widget)
    type_key("c")
    label, window = preview.image_label, browser.widget
    middle, y = label.width() // 2, label.height() // 2

    # A press away from the line drags the window, as ever; one on the line drags the line.
    drag(label, QtCore.QPoint(label.width() // 10, y), QtCore.QPoint(label.width() // 10 + 5, y))
    assert preview.wipe_split == 0.5
    drag(label, QtCore.QPoint(middle + 3, y), QtCore.QPoint(label.width() * 8 // 10, y))
    assert preview.wipe_split == pytest.approx(0.8, abs=0.01)
    assert [colour_at(preview, x) for x in (0.7, 0.9)] == ["A", "B"]

    type_key("w")
    assert [colour_at(preview, x) for x in (0.7, 0.9)] == ["A", "A"]
    assert not preview.label_compare_b.isVisible()
    type_key("W")
    type_key("s")
    assert [colour_at(preview, x) for x in (0.7, 0.9)] == ["B", "A"]
    assert preview.label_compare_a.text().startswith("2000_comp.jpg")

    type_key(Qt.Key.Key_Escape)
    assert not preview.comparing and browser.fade_method != "out"
    assert colour_at(preview, 0.9) == "A" and preview.image == pair[0]
    type_key(Qt.Key.Key_Escape)
    assert browser.fade_method == "out"


@pytest.mark.parametrize("end", ["menu", "escape", "close", "deleted", "another image"])
def test_compare_with_current_leaves_no_file_and_the_script_as_it_was(
        rig, host, nuke, comp, pair, snap_dir, temp, qtbot, end):
    comp["bars"].setSelected(True)
    script, undo_steps, files = host.script_text(), nuke.Undo.undoSize(), snapshots_in(snap_dir)
    browser = open_active(rig, qtbot)
    preview = browser.preview_image
    choose(preview, "action_compare_current")

    assert preview.comparing and preview.label_compare_b.text() == "now"
    assert colour_at(preview, 0.25) == "A" and colour_at(preview, 0.75) is None
    assert len(os.listdir(str(temp))) == 1
    if end == "menu":
        choose(preview, "action_end_compare")
    elif end == "escape":
        type_key(Qt.Key.Key_Escape)
    elif end == "close":
        browser.close()
    elif end == "deleted":
        browser.widget.deleteLater()
        QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.Type.DeferredDelete)
    else:
        preview.set_image(pair[1])

    assert os.listdir(str(temp)) == []
    assert end == "deleted" or not preview.comparing
    assert snapshots_in(snap_dir) == files
    assert host.script_text() == script
    assert nuke.Undo.undoSize() - undo_steps <= 1


@pytest.mark.parametrize("case, text", [
    ("no viewer", "No active viewer found. Please create a viewer node."),
    ("nothing to render", "No valid data to write"),
    ("no preview", NOTHING),
])
def test_nothing_to_compare_says_why_and_leaves_nothing(
        rig, host, nuke, comp, pair, temp, messages, qtbot, case, text):
    if case == "no viewer":
        nuke.delete(comp["viewer"])
    elif case == "nothing to render":
        comp["grade"].setInput(0, None)
    script = host.script_text()
    browser = open_active(rig, qtbot)
    preview = browser.preview_image
    if case == "no preview":
        choose(preview, "action_clear")

    choose(preview, "action_compare_current")
    thumb = browser.get_thumbnails_list()[0].widget
    QtTest.QTest.mouseClick(thumb, Qt.MouseButton.LeftButton)
    enter(thumb)
    type_key("c")

    assert messages == [text] + ([NOTHING] if case == "no preview" else [])
    assert preview.comparing is (case != "no preview")
    assert os.listdir(str(temp)) == [] and host.script_text() == script
