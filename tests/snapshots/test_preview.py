"""The preview pane: showing an image, its scroll bars on zoom, its right-click menu, and putting a
snapshot back into the graph."""

import os

import pytest
from cobaltRig.qt import QtCore, QtTest, QtWidgets, shiboken

from conftest import write_jpg


@pytest.fixture
def browser(rig, snap_dir, browser_slot, qtbot):
    return rig.show_snapshot_browser()


@pytest.fixture
def preview(browser):
    return browser.preview_image


@pytest.fixture
def shot(snap_dir):
    return write_jpg(snap_dir / "1700000000_comp.jpg", 400, 200)


def remembered(helper):
    return helper.load_settings()["current_snapshot_preview"]


@pytest.mark.parametrize("src, update_xml", [
    ("shot", True),
    ("shot", False),
    ("missing", True),
    (None, True),
    ("", True),
])
def test_only_a_real_image_shown_when_asked_is_remembered(browser, preview, shot, helper,
                                                          snap_dir, src, update_xml):
    helper.update_xml("current_snapshot_preview", "/kept.jpg")
    path = {"missing": str(snap_dir / "gone.jpg"), "shot": shot}.get(src, src)

    preview.set_image(path, update_xml)

    shown = src == "shot"
    assert remembered(helper) == (shot if shown and update_xml else "/kept.jpg")
    assert preview.isVisible() is shown and browser.preview_empty.isVisible() is not shown
    if shown:
        # At the pane width, in the image's shape.
        label = preview.image_label
        assert preview.image == shot and preview.scaleFactor == 1.0
        assert label.height() == 200 * label.width() // 400


@pytest.mark.parametrize("factor, expected", [
    (1.25, 162),  # 125 + 0.25 * 150, cut
    (0.8, 50),    # 80 - 0.2 * 150
])
def test_the_scroll_bars_keep_the_middle_of_the_view(preview, factor, expected):
    bar = QtWidgets.QScrollBar()
    bar.setRange(0, 10000)
    bar.setPageStep(301)
    bar.setValue(100)
    preview.adjust_scrollbar(bar, factor)
    assert bar.value() == expected


def menu_texts(menu):
    return [a.text() or ("---" if a.isSeparator() else "") for a in menu.actions()]


def test_the_menu_offers_view_insert_flag_comment_compare_and_clear(preview, shot, helper, nuke,
                                                                    messages, monkeypatch, browser):
    preview.set_image(shot)
    flagged = []
    monkeypatch.setattr(helper, "set_flag", lambda b, src, colour: flagged.append((b, src, colour)))

    preview.show_right_click_menu()

    assert menu_texts(preview.menu_main) == ["view", "insert snapshot", "insert preview", "flag",
                                             "comment", "compare with current", "---", "clear"]
    assert menu_texts(preview.menu_view) == ["zoom in", "zoom out", "fit"]
    # Inserting needs the snapshot's own files.
    preview.action_insert_snapshot.trigger()
    assert messages == ["Cannot find snapshot nuke file."]
    preview.action_insert_preview.trigger()
    [read] = nuke.allNodes("Read")
    assert read["file"].value() == shot
    os.remove(shot)
    preview.action_insert_preview.trigger()
    assert messages[1:] == ["Cannot find current preview image"]
    assert len(nuke.allNodes("Read")) == 1
    flags = preview.menu_flags.actions()
    assert len(flags) == 1 + len(helper.load_settings()["flags"])
    # The path is the one remembered when the menu was built.
    helper.update_xml("current_snapshot_preview", "/later.jpg")
    flags[0].trigger()
    flags[1].trigger()
    first = helper.load_settings()["flags"][0].split(",")
    assert [(src, colour) for b, src, colour in flagged] == [(shot, None), (shot, first)]
    assert flagged[0][0] is browser

    preview.action_zoom_in.trigger()
    assert preview.scaleFactor == 1.25
    preview.action_clear.trigger()
    assert not preview.isVisible() and remembered(helper) is None


@pytest.fixture
def saved_graph(nuke, shot):
    """A snapshot whose .nk holds a Blur and a Grade."""
    blur = nuke.nodes.Blur(name="saved_blur")
    grade = nuke.nodes.Grade(name="saved_grade", inputs=[blur])
    blur.selectOnly()
    grade.setSelected(True)
    nuke.nodeCopy(os.path.splitext(shot)[0] + ".nk")
    nuke.scriptClear()
    nuke.nodes.Constant(name="mine")
    return shot


def names(nuke):
    return sorted(n.name() for n in nuke.allNodes())


def answer_box(answer, seen):
    """Answers the next modal box: clicks the button named `answer`, or for "return" types Return,
    as the keyboard gives it, into the box once it is the active window."""
    def find():
        box = QtWidgets.QApplication.activeModalWidget()
        if box is None:
            return QtCore.QTimer.singleShot(10, find)
        seen.append((box.windowTitle(), box.text()))
        if answer == "return":
            box.activateWindow()
            return QtCore.QTimer.singleShot(50, lambda: type_return(box))
        for button in box.findChildren(QtWidgets.QPushButton):
            if button.text() == answer:
                return button.click()
        box.reject()

    def type_return(box):
        assert QtWidgets.QApplication.activeWindow() == box
        QtTest.QTest.keyClick(QtWidgets.QApplication.focusWidget(), QtCore.Qt.Key_Return)
        # A box that Return leaves open is told apart from one that appended.
        QtCore.QTimer.singleShot(200, lambda: shiboken.isValid(box) and box.reject())

    QtCore.QTimer.singleShot(0, find)


@pytest.mark.parametrize("answer, expected", [
    ("append", ["mine", "saved_blur", "saved_grade"]),
    ("overwrite", ["saved_blur", "saved_grade"]),
    ("cancel", ["mine"]),
    ("return", ["mine", "saved_blur", "saved_grade"]),  # the graph is replaced only by a click
])
def test_inserting_a_snapshot_asks_append_or_overwrite(preview, saved_graph, nuke, answer,
                                                       expected, monkeypatch):
    preview.set_image(saved_graph)
    undo = []
    monkeypatch.setattr(nuke.Undo, "begin", staticmethod(lambda *a: undo.append("begin")))
    monkeypatch.setattr(nuke.Undo, "end",
                        staticmethod(lambda *a: undo.append(("end", names(nuke)))))
    seen = []
    answer_box(answer, seen)

    preview.ask_insert_snapshot()

    assert seen == [("Append to DAG or overwrite?",
                     "Overwrite your node graph by the snapshot or append the snapshot to your "
                     "node graph? <b>NOTE:</b> Overwrite is undoable.")]
    assert names(nuke) == expected
    # The deletions and the paste of an overwrite are one step of the host's undo.
    assert undo == (["begin", ("end", expected)] if answer == "overwrite" else [])
