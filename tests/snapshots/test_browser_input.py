"""The frameless browser's fades and its keys over the preview, run on the real timer."""

import pytest
from cobaltRig.qt import QtCore, QtGui, QtWidgets

from conftest import enter

pytestmark = pytest.mark.usefixtures("browser_slot")

Qt = QtCore.Qt


@pytest.mark.parametrize("how", ["escape", "close button", "escape twice", "escape fading in"])
def test_opening_fades_in_and_escape_and_the_close_button_fade_out_and_close(rig, snap_dir,
                                                                            qtbot, how):
    browser = rig.show_snapshot_browser()
    assert browser.widget.windowOpacity() == 0 and browser.fade_method == "in"
    if how == "escape fading in":
        # A fade out turns a fade in around.
        qtbot.waitUntil(lambda: browser.widget.windowOpacity() > 0.25, timeout=3000)
    else:
        qtbot.waitUntil(lambda: browser.fade_method == "", timeout=3000)
        assert browser.widget.windowOpacity() == 1 and not browser.timer_fade.isActive()
        browser.push_settings.click()

    if how == "close button":
        browser.push_close.click()
    else:
        for _ in range(2 if how == "escape twice" else 1):
            qtbot.keyClick(browser.widget, Qt.Key_Escape)

    assert browser.fade_method == "out" and browser.isVisible()
    assert browser.fade_connections == (3 if how == "escape twice" else 2)
    qtbot.waitUntil(lambda: browser.fade_method == "" and not browser.isVisible(), timeout=3000)
    assert browser.widget.windowOpacity() == 0 and not browser.timer_fade.isActive()
    assert rig.snapshotbrowser is browser
    # A new window starts counting its own steps again.
    assert rig.show_snapshot_browser().fade_connections == 1


@pytest.mark.parametrize("key, text, change", [
    (Qt.Key_Plus, "+", "zoom in"), (Qt.Key_Equal, "=", "zoom in"), (Qt.Key_Minus, "-", "zoom out"),
    (Qt.Key_H, "h", "fit"), (Qt.Key_H, "H", None),
    (Qt.Key_Up, "", (0, 30)), (Qt.Key_Down, "", (0, -30)),
    (Qt.Key_Left, "", (-30, 0)), (Qt.Key_Right, "", (30, 0)),
])
def test_keys_over_the_preview_zoom_fit_and_scroll(rig, helper, snap_dir, key, text, change):
    image = snap_dir / "1700000000_shot.jpg"
    QtGui.QImage(3000, 2000, QtGui.QImage.Format_RGB32).save(str(image))
    helper.update_xml("current_snapshot_preview", str(image))
    browser = rig.show_snapshot_browser()
    preview = browser.preview_image
    preview.scaleImage(2.0)
    # A label larger than the view both ways, so that every arrow has room to scroll.
    preview.image_label.setFixedSize(4000, 3000)
    QtWidgets.QApplication.processEvents()
    bars = preview.scroll_area.horizontalScrollBar(), preview.scroll_area.verticalScrollBar()
    for bar in bars:
        bar.setValue(bar.maximum() // 2)
    before = preview.scaleFactor, bars[0].value(), bars[1].value()

    # Without the pointer over the preview these keys do nothing. (Where an earlier test left the
    # pointer decides whether Qt 6 sends the new window an enter event: take the pointer away.)
    enter(preview.widget, QtCore.QEvent.Leave)
    assert not browser.hover_preview
    QtWidgets.QApplication.sendEvent(
        browser.widget, QtGui.QKeyEvent(QtCore.QEvent.KeyPress, key, Qt.NoModifier, text))
    assert (preview.scaleFactor, bars[0].value(), bars[1].value()) == before
    enter(preview.widget)
    assert browser.hover_preview
    QtWidgets.QApplication.sendEvent(
        browser.widget, QtGui.QKeyEvent(QtCore.QEvent.KeyPress, key, Qt.NoModifier, text))

    after = (preview.scaleFactor, bars[0].value() - before[1], bars[1].value() - before[2])
    if isinstance(change, tuple) or change is None:
        assert after == (before[0],) + (change or (0, 0))
    else:
        factor = after[0]
        assert {"zoom in": factor > before[0], "zoom out": factor < before[0],
                "fit": factor == 1.0}[change]
