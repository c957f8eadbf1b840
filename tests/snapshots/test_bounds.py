"""How far the preview goes: the zoom stays within bounds of the fitted image, and fit shows the
whole image."""

import pytest
from cobaltRig.qt import QtCore, QtWidgets

from conftest import write_jpg

pytestmark = pytest.mark.usefixtures("browser_slot")

Qt = QtCore.Qt


@pytest.mark.parametrize("shape", [(480, 270), (300, 900)], ids=["landscape", "portrait"])
def test_fit_shows_the_whole_image_and_the_zoom_steps_from_it_within_bounds(rig, helper,
                                                                             snap_dir, shape):
    image = write_jpg(snap_dir / "1700000000_comp.jpg", *shape)
    helper.update_settings({"snapshotbrowser_size_current": "1200,800",
                            "current_snapshot_preview": image})
    preview = rig.show_snapshot_browser().preview_image
    QtWidgets.QApplication.processEvents()
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
