"""What the browser holds and how far it goes: the zoom stays within bounds of the fitted image,
fit shows the whole image, and only the rows that hold pixels are scaled."""

import pytest
from cobaltRig.qt import QtCore, QtWidgets

from conftest import write_jpg
from test_table import write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")

Qt = QtCore.Qt


def open_on(rig, helper, image, size="1200,800"):
    helper.update_xml("snapshotbrowser_size_current", size)
    helper.update_xml("current_snapshot_preview", image)
    browser = rig.show_snapshot_browser()
    QtWidgets.QApplication.processEvents()
    return browser


@pytest.mark.parametrize("shape", [(480, 270), (300, 900)], ids=["landscape", "portrait"])
def test_fit_shows_the_whole_image_and_the_zoom_steps_from_it_within_bounds(rig, helper,
                                                                             snap_dir, shape):
    image = write_jpg(snap_dir / "1700000000_comp.jpg", *shape)
    browser = open_on(rig, helper, image)
    preview = browser.preview_image
    view = preview.scroll_area.maximumViewportSize()

    preview.normal_size()
    whole = preview.image_label.size()
    assert whole == preview.image_label.pixmap().size().scaled(view, Qt.KeepAspectRatio)
    assert whole.width() <= view.width() and whole.height() <= view.height()
    assert view.width() - whole.width() <= 1 or view.height() - whole.height() <= 1

    # The first step either way starts from the fitted size.
    preview.zoom_out()
    assert preview.image_label.width() == round(whole.width() * 0.8)
    preview.normal_size()
    assert preview.scaleFactor == 1.0 and preview.image_label.size() == whole
    preview.zoom_in()
    assert preview.image_label.width() == round(whole.width() * 1.25)
    # And back the other way to the fitted size itself.
    preview.zoom_out()
    assert preview.scaleFactor == 1.0 and preview.image_label.size() == whole

    widths = []
    for _ in range(20):
        preview.zoom_in()
        widths.append(preview.image_label.width())
    assert preview.scaleFactor <= 16 and widths[-1] == widths[-5]
    assert max(widths) <= 16 * whole.width()
    for _ in range(30):
        preview.zoom_out()
    assert preview.scaleFactor >= 1 / 8
    assert preview.image_label.width() >= whole.width() // 8


def test_resizing_scales_only_the_rows_that_hold_pixels(rig, helper, snap_dir, qtlog):
    images = [write_snapshot(snap_dir, 1000 + i) for i in range(60)]
    browser = open_on(rig, helper, images[-1], size="900,400")
    assert browser.get_thumbnails_list()[-1].pixmap.isNull()

    for size in [(950, 450), (1000, 500), (960, 480)]:
        browser.widget.resize(*size)
        QtWidgets.QApplication.processEvents()
    browser.splitter.setSizes([300, 600])
    browser.adjust_splitter_sizes()

    assert [r.message for r in qtlog.records if "null pixmap" in r.message] == []
