"""The snapshot browser window: how it opens and is replaced, what it makes on disk, its tool tips
and help menu. Its camera button is tried with the settings panel."""

import gc
import os
import weakref

import pytest
from cobaltRig.qt import QtCore, QtGui

from conftest import snapshots_in

pytestmark = pytest.mark.usefixtures("browser_slot")


@pytest.fixture
def opened_urls():
    class Catcher(QtCore.QObject):
        urls = []

        @QtCore.Slot(QtCore.QUrl)
        def open(self, url):
            self.urls.append(url)

    catcher = Catcher()
    for scheme in ("file", "http", "https"):
        QtGui.QDesktopServices.setUrlHandler(scheme, catcher, "open")
    yield catcher.urls
    for scheme in ("file", "http", "https"):
        QtGui.QDesktopServices.unsetUrlHandler(scheme)


@pytest.mark.parametrize("tooltips", ["True", "False", "true"])
def test_it_opens_frameless_on_top_centred_with_tool_tips_if_switched_on_and_a_help_menu(
        rig, helper, snap_dir, opened_urls, monkeypatch, tooltips):
    helper.update_settings({"snapshotbrowser_size_current": "900,600", "tooltips": tooltips})
    shown = []
    monkeypatch.setattr(helper, "show_changelog", lambda: shown.append("changelog"))
    monkeypatch.setattr(helper, "show_about_window", lambda: shown.append("about"))

    browser = rig.show_snapshot_browser()

    window = browser.widget
    assert rig.snapshotbrowser is browser and browser.isVisible()
    flags = window.windowFlags()
    assert flags & QtCore.Qt.FramelessWindowHint and flags & QtCore.Qt.WindowStaysOnTopHint
    assert window.size().toTuple() == (900, 600)
    screen = QtGui.QGuiApplication.primaryScreen().availableGeometry()
    assert abs(window.frameGeometry().center().x() - screen.center().x()) <= 1
    assert not browser.group_settings.isVisible()
    on = tooltips == "True"
    assert bool(browser.push_snapshot.toolTip()) is on
    assert bool(browser.input_custom_height.toolTip()) is on
    assert not browser.push_help.toolTip()

    browser.push_help.click()

    menu = browser.menu_help
    assert [a.text() for a in menu.actions()] == ["Browse online documentation", "Show changelog",
                                                  "Support", "About"]
    for action in menu.actions():
        action.trigger()
    guide, support = opened_urls
    assert guide.isLocalFile() and os.path.isfile(guide.toLocalFile())
    assert os.path.dirname(guide.toLocalFile()) == os.path.join(os.path.dirname(rig.__file__),
                                                                "docs")
    assert support.scheme() == "https"
    assert shown == ["changelog", "about"]


@pytest.mark.parametrize("which, text", [
    (None, None),
    ("root", "Cannot create snapshot browser root directory at: '{}'. Please choose a different "
             "path"),
    ("current", "Cannot create current snapshot directory at: '{}'."),
])
def test_missing_directories_are_made_or_one_that_cannot_be_stops_the_window_after_its_message(
        rig, helper, tmp_path, messages, capsys, which, text):
    blocker = tmp_path / "a file"
    blocker.write_text("")
    bad = str(blocker / "snapshots")
    current = bad if which == "current" else str(tmp_path / "elsewhere" / "new shot")
    helper.update_settings({"snapshotbrowser_root": bad if which == "root" else "",
                            "current_snapshot_dir": current})

    browser = rig.show_snapshot_browser()

    if which is None:
        # An empty root becomes the default.
        default = helper.get_default_snapshot_root_dir()
        assert helper.load_settings()["snapshotbrowser_root"] == default
        assert browser.snapshotbrowser_root == default and os.path.isdir(default)
        assert browser.input_snapshotbrowser_root.text() == default
        assert os.path.isdir(current) and messages == []
        return
    assert messages == [text.format(bad)]
    assert browser.preview_image is None and browser.table_thumbs is None
    assert rig.snapshotbrowser is browser
    # Its camera, if anything reaches for it, fails cleanly rather than crashing.
    with pytest.raises(RuntimeError):
        browser.populate_table_thumbs()
    assert capsys.readouterr().err == ""


def test_a_second_opening_or_a_size_button_replaces_the_window_and_nothing_keeps_it_alive(
        rig, helper, snap_dir, qtbot, comp):
    helper.update_settings({"snapshotbrowser_size_custom": "700,450",
                            "snapshotbrowser_size_current": "1000,650"})
    first = rig.show_snapshot_browser()
    first_widget = weakref.ref(first)
    destroyed = []
    first.widget.destroyed.connect(lambda *a: destroyed.append(True))

    second = rig.show_snapshot_browser()

    assert rig.snapshotbrowser is second and second is not first
    assert not first.isVisible() and second.isVisible()
    del first
    gc.collect()
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
    assert first_widget() is None and destroyed == [True]

    second.widget.destroyed.connect(lambda *a: destroyed.append("second"))
    second_widget = weakref.ref(second)
    second.push_custom_size.click()

    third = rig.snapshotbrowser
    assert third is not second and not second.isVisible()
    assert third.widget.size().toTuple() == (700, 450)
    # A window its own button replaced lives until the last step of its fade out.
    del second
    gc.collect()
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
    assert destroyed == [True] and second_widget() is not None
    qtbot.waitUntil(lambda: second_widget() is None, timeout=3000)
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
    assert destroyed == [True, "second"]
    assert helper.load_settings()["snapshotbrowser_size_current"] == "700,450"
    third.push_close.click()
    qtbot.waitUntil(lambda: not third.isVisible(), timeout=3000)
    assert rig.snapshotbrowser is third
    # A closed browser in its slot is still refreshed by a snapshot.
    rig.snapshot()
    assert len(third.row_sources()) == 1
    third.push_maximize.click()
    screen = QtGui.QGuiApplication.primaryScreen().geometry()
    assert rig.snapshotbrowser.widget.size() == screen.size()


def test_a_browser_deleted_elsewhere_is_refused_and_replaced(rig, snap_dir, comp, messages):
    old = rig.show_snapshot_browser()
    old_preview = old.preview_image
    old.widget.deleteLater()
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)

    for call in (old.populate_table_thumbs, old.show_help_menu, old_preview.zoom_in,
                 lambda: old_preview.set_image(None)):
        with pytest.raises(RuntimeError, match="the snapshot browser window was closed"):
            call()
    # A snapshot meanwhile finds no browser to refresh, and still writes its files.
    rig.snapshot()
    assert len([f for f in snapshots_in(snap_dir) if f.endswith(".jpg")]) == 1

    new = rig.show_snapshot_browser()
    assert new is not old and new.isVisible()
    new.populate_table_thumbs()
    assert len(new.row_sources()) == 1
    assert messages == []
