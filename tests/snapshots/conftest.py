"""Fixtures of the snapshot suites: a snapshot directory in the test's settings, a small comp
watched by a viewer, recorded messages, the browser closed after each test, and keys as typed."""

import os

import pytest
from cobaltRig.qt import QtCore, QtGui, QtTest, QtWidgets


@pytest.fixture
def helper():
    from cobaltRig import helper as helper_module

    return helper_module


@pytest.fixture
def snap_dir(tmp_path, helper):
    """The current snapshot directory, under a root of the test's own."""
    root = tmp_path / "snapshots"
    directory = root / "shot"
    directory.mkdir(parents=True)
    helper.update_settings({"snapshotbrowser_root": str(root),
                            "current_snapshot_dir": str(directory),
                            "snapshot_render_width": "240"})
    return directory


@pytest.fixture
def comp(nuke):
    """CheckerBoard -> Grade -> Viewer, with a ColorBars on the side; the Grade is viewed."""
    checker = nuke.nodes.CheckerBoard2(format="square_1K")
    checker.setXYpos(0, 0)
    grade = nuke.nodes.Grade(inputs=[checker])
    grade.setXYpos(0, 60)
    bars = nuke.nodes.ColorBars()
    bars.setXYpos(200, 0)
    viewer = nuke.nodes.Viewer(inputs=[grade])
    viewer.setXYpos(0, 150)
    return {"checker": checker, "grade": grade, "bars": bars, "viewer": viewer}


@pytest.fixture
def messages(helper, monkeypatch):
    """Texts of each message box."""
    shown = []
    monkeypatch.setattr(helper, "show_message_box",
                        lambda parent, text: shown.append(text))
    return shown


@pytest.fixture
def asked(helper, monkeypatch):
    """The questions asked, answered with `asked.answer`."""
    class Asked(list):
        answer = True

    questions = Asked()

    def ask(title, message, process_label="ok", color_process=None):
        questions.append((title, message, process_label, color_process))
        return questions.answer

    monkeypatch.setattr(helper, "ask_dialog", ask)
    return questions


@pytest.fixture
def graph(nuke):
    """What a user sees of the graph: names, classes and the selection of the top level."""
    def state():
        return sorted((n.name(), n.Class(), n.isSelected()) for n in nuke.allNodes())

    return state


def snapshots_in(directory):
    return sorted(os.listdir(str(directory)))


@pytest.fixture
def browser_slot(rig):
    """Closes and drops the browser a test opened. The pointer starts off every window: keys act
    on what it is over (the preview takes the arrows), wherever an earlier test left it."""
    QtGui.QCursor.setPos(0, 0)
    yield rig
    window = rig.__dict__.pop("snapshotbrowser", None)
    if window is not None:
        try:
            window.close()
        except Exception:
            pass
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)


def open_active(rig, qtbot):
    """Opens the browser as the active window, so that keys reach it through the focus chain."""
    browser = rig.show_snapshot_browser()
    browser.widget.activateWindow()
    qtbot.waitUntil(lambda: QtWidgets.QApplication.activeWindow() == browser.widget,
                    timeout=3000)
    return browser


def enter(widget, kind=QtCore.QEvent.Type.Enter):
    QtWidgets.QApplication.sendEvent(widget, QtCore.QEvent(kind))


def type_key(key):
    """A key as the keyboard gives it: to the widget that has the focus."""
    QtTest.QTest.keyClick(QtWidgets.QApplication.focusWidget(), key)
    QtWidgets.QApplication.processEvents()


def image_size(path):
    return QtGui.QImageReader(str(path)).size().toTuple()


def write_jpg(path, width=40, height=30, color="#4080c0"):
    """A real jpg of that size; gives its path as text."""
    image = QtGui.QImage(width, height, QtGui.QImage.Format_RGB32)
    image.fill(QtGui.QColor(color))
    assert image.save(str(path), "JPG")
    return str(path)


def rows_follow_the_column(browser, width, height):
    """Asserts each row is as high as its `width` x `height` image at the column's width, its
    pixels read at that width (not blown up); gives the column's width."""
    table = browser.table_thumbs
    column = table.columnWidth(0)
    for row, thumb in enumerate(browser.get_thumbnails_list()):
        assert table.rowHeight(row) == height * column // width
        assert thumb.pixmap.width() == thumb.widget.pixmap().width() == column
    return column
