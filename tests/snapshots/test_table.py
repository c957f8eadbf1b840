"""The thumbnail table on directories of real jpgs: listing, lazy images, the slider at start-up,
the marks and menus of thumbnails, and the file actions on the table's selection."""

import os
import pathlib
import shutil
import threading

import pytest
from cobaltRig.qt import QtCore, QtGui, QtWidgets

from conftest import rows_follow_the_column, snapshots_in

pytestmark = pytest.mark.usefixtures("browser_slot")


def write_snapshot(directory, seconds, size=(200, 100), nk=True, comment=None, flag=None,
                   color=QtGui.QColor(90, 120, 150)):
    """A snapshot triad as the product writes it; returns the image path."""
    stem = os.path.join(str(directory), "{}_comp".format(seconds))
    image = QtGui.QImage(size[0], size[1], QtGui.QImage.Format_RGB32)
    image.fill(color)
    assert image.save(stem + ".jpg", "JPG")
    if nk:
        pathlib.Path(stem + ".nk").write_text("# nodes\n")
    if comment is not None or flag is not None:
        pathlib.Path(stem + ".xml").write_text(
            "<?xml version='1.0' encoding='UTF-8'?>\n<snapshot><metadata><meta name=\"comment\">{}"
            "</meta><meta name=\"flag\">{}</meta></metadata></snapshot>\n".format(comment or "",
                                                                             flag or ""))
    return stem + ".jpg"


def select_rows(browser, *rows):
    table = browser.table_thumbs
    table.clearSelection()
    for top, bottom in rows:
        table.setRangeSelected(QtWidgets.QTableWidgetSelectionRange(top, 0, bottom, 0), True)


def move_action(thumb, name):
    thumb.show_right_click_menu()
    [action] = [a for a in thumb.menu_move.actions() if a.text() == name]
    return action


def stems(directory):
    return sorted({os.path.splitext(name)[0] for name in snapshots_in(directory)})


def test_only_rows_in_view_are_read_on_this_thread_until_scrolled_to(rig, snap_dir, helper,
                                                                    monkeypatch, qtlog):
    helper.update_xml("snapshotbrowser_size_current", "900,400")
    for i in range(40):
        write_snapshot(snap_dir, 1000 + i, size=(400, 400), comment="take {}".format(i))
    size_threads, metadata_read = [], []
    read_size, read_metadata = helper.get_image_size, helper.load_metadata
    monkeypatch.setattr(helper, "get_image_size", lambda path: size_threads.append(
        threading.get_ident()) or read_size(path))
    monkeypatch.setattr(helper, "load_metadata", lambda src: metadata_read.append(src)
                        or read_metadata(src))

    browser = rig.show_snapshot_browser()

    thumbs = browser.get_thumbnails_list()
    loaded = [not t.pixmap.isNull() for t in thumbs]
    in_view = browser.table_thumbs.rowAt(browser.table_thumbs.viewport().height() - 1)
    assert all(loaded[:in_view + 1]) and not loaded[-1] and sum(loaded) < 15
    # Replaced readers run on this thread; metadata is read for the rows read, no others.
    assert len(size_threads) >= 40 and set(size_threads) == {threading.get_ident()}
    assert sorted(set(metadata_read)) == sorted(t.get_src() for t in thumbs
                                                if not t.pixmap.isNull())
    assert thumbs[-1].get_src() not in metadata_read
    browser.table_thumbs.scrollToBottom()
    assert thumbs[-1].get_src() in metadata_read
    # Read at the size the row shows, not in full.
    assert thumbs[-1].pixmap.size().toTuple() == (200, 200)
    # A script sees the marks of any row, in view or not.
    assert thumbs[20].widget.toolTip() == "take 19"
    # A resize scales only the rows that hold pixels.
    assert thumbs[20].pixmap.isNull()
    for size in [(950, 450), (1000, 500), (960, 480)]:
        browser.widget.resize(*size)
        QtWidgets.QApplication.processEvents()
    browser.splitter.setSizes([300, 600])
    browser.adjust_splitter_sizes()
    assert [r.message for r in qtlog.records if "null pixmap" in r.message] == []


def test_sizes_read_side_by_side_keep_each_row_its_own(rig, snap_dir, tmp_path):
    # The broken images make the readers warn through Qt's message handler, which the test
    # runner hands to Python: readers on other threads must not wait on the interpreter forever.
    shapes = {0: (200, 100), 1: (200, 50), 2: None}
    (tmp_path / "broken.jpg").write_bytes(b"not an image")
    copied = [write_snapshot(tmp_path, 1), write_snapshot(tmp_path, 2, size=(200, 50)),
              str(tmp_path / "broken.jpg")]
    for i in range(600):
        shutil.copy(copied[i % 3], str(snap_dir / "{}_comp.jpg".format(1000 + i)))

    browser = rig.show_snapshot_browser()

    table = browser.table_thumbs
    newest_first = list(reversed(range(600)))
    assert browser.row_sources() == [str(snap_dir / "{}_comp.jpg".format(1000 + i))
                                     for i in newest_first]
    # An image that can't be read stands as a tile half as high as the column is wide.
    heights = [table.rowHeight(row) for row in range(600)]
    assert heights == [(shapes[i % 3] or (200, 100))[1] for i in newest_first]


@pytest.mark.parametrize("remembered, shown_row", [(1, 1), (None, 0)])
def test_start_up_ends_on_the_remembered_preview_when_it_is_listed(rig, helper, snap_dir,
                                                                   tmp_path, remembered,
                                                                   shown_row):
    images = [write_snapshot(snap_dir, 1000 + i) for i in range(3)][::-1]
    elsewhere = write_snapshot(tmp_path, 5)
    preview = images[remembered] if remembered is not None else elsewhere
    helper.update_xml("current_snapshot_preview", preview)

    browser = rig.show_snapshot_browser()

    assert browser.preview_image.image == images[shown_row]
    assert helper.load_settings()["current_snapshot_preview"] == images[shown_row]
    assert browser.slider_versions.value() == shown_row + 1
    assert browser.table_thumbs.currentRow() == shown_row
    browser.slider_versions.setValue(3)
    assert browser.preview_image.image == images[2]


def test_marks_show_comment_and_flag(rig, snap_dir):
    marks = [("looks good", "200,40,40", (20, 0)), ("looks good", None, (0, 0)),
             (None, "40,200,40", None), (None, None, None)]
    for seconds, (comment, flag, _) in enumerate(marks):
        write_snapshot(snap_dir, 1000 + seconds, comment=comment, flag=flag)
    thumbs = rig.show_snapshot_browser().get_thumbnails_list()[::-1]

    for thumb, (comment, flag, comment_at) in zip(thumbs, marks):
        assert thumb.label_comment.isHidden() == (comment is None)
        assert thumb.label_flag.isHidden() == (flag is None)
        if comment_at:
            assert thumb.label_comment.pos().toTuple() == comment_at
            assert thumb.widget.toolTip() == comment
        if flag:
            colour = QtGui.QColor(*(int(v) for v in flag.split(",")))
            assert thumb.label_flag.grab().toImage().pixelColor(5, 5) == colour


def test_a_thumbnails_menu_previews_flags_and_unflags_and_a_right_click_does_not_preview(
        rig, helper, snap_dir, qtbot, monkeypatch):
    old, new = write_snapshot(snap_dir, 1000), write_snapshot(snap_dir, 2000)
    browser = rig.show_snapshot_browser()
    flags = helper.load_settings()["flags"]
    assert browser.preview_image.image == new
    thumb = browser.get_thumbnails_list()[1]

    thumb.show_right_click_menu()
    assert browser.preview_image.image == new
    thumb.action_preview.trigger()
    assert browser.preview_image.image == old
    browser.get_thumbnails_list()[0].set_to_preview()
    qtbot.mouseDClick(thumb.widget, QtCore.Qt.LeftButton)
    assert browser.preview_image.image == old

    assert len(thumb.menu_flags.actions()) == 1 + len(flags)
    thumb.menu_flags.actions()[1].trigger()
    assert helper.load_metadata(old)["flag"] == flags[0].replace(" ", "")
    assert browser.get_thumbnails_list()[1].label_flag.isVisible()
    thumb = browser.get_thumbnails_list()[1]
    thumb.show_right_click_menu()
    thumb.action_unflag.trigger()
    assert helper.load_metadata(old)["flag"] == ""
    assert not browser.get_thumbnails_list()[1].label_flag.isVisible()

    # An action that refreshes the table, here after taking its own snapshot away, may finish:
    # the row goes at once, the thumbnail lives until its own action is over.
    def remove_and_refresh(window, src, colour):
        os.remove(src)
        window.populate_table_thumbs()

    monkeypatch.setattr(helper, "set_flag", remove_and_refresh)
    used, other = browser.get_thumbnails_list()
    used.show_right_click_menu()
    used.action_unflag.trigger()
    assert browser.row_sources() == [old] and used.get_src() == new
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
    with pytest.raises(RuntimeError, match="window was closed"):
        used.get_src()
    assert other.get_src() == old


@pytest.mark.parametrize("ranges, gone", [
    ([(0, 0), (2, 2)], [0, 2]),
    ([(1, 3)], [1]),
    ([], []),
], ids=["two ranges with the preview", "one range", "none"])
def test_delete_takes_the_top_row_of_each_selected_range(rig, helper, snap_dir, ranges, gone):
    images = [write_snapshot(snap_dir, 1000 + i, nk=i % 2 == 0, comment="x")
              for i in range(5)][::-1]
    browser = rig.show_snapshot_browser()
    assert browser.preview_image.image == images[0]
    select_rows(browser, *ranges)

    # Whichever thumbnail's menu is used, the table's selection is what goes.
    browser.get_thumbnails_list()[4].delete_snapshot()

    kept = [src for row, src in enumerate(images) if row not in gone]
    assert browser.row_sources() == kept
    assert stems(snap_dir) == sorted(os.path.basename(src)[:-4] for src in kept)
    # Deleting the snapshot in the preview empties the pane, not the remembered path.
    assert browser.preview_image.isVisible() == (0 not in gone)
    assert helper.load_settings()["current_snapshot_preview"] == images[0]


def test_move_skips_the_own_directory_and_moves_whole_triads_within_the_saved_root(
        rig, helper, snap_dir, tmp_path):
    images = [write_snapshot(snap_dir, 1000 + i, comment="c", nk=i != 1) for i in range(3)][::-1]
    other = snap_dir.parent / "other"
    other.mkdir()
    # A directory whose name is no valid text disables only its own entry.
    os.mkdir(os.path.join(os.fsencode(str(snap_dir.parent)), b"caf\xe9"))
    browser = rig.show_snapshot_browser()
    select_rows(browser, (0, 0), (1, 1))
    thumb = browser.get_thumbnails_list()[2]

    move_action(thumb, "shot").trigger()
    entries = {a.text(): a.isEnabled() for a in thumb.menu_move.actions()}
    assert entries.pop("other") and entries.pop("shot") and list(entries.values()) == [False]
    assert browser.row_sources() == images and len(snapshots_in(snap_dir)) == 8

    move_action(thumb, "other").trigger()

    assert browser.row_sources() == [images[2]]
    assert snapshots_in(other) == ["1001_comp.jpg", "1001_comp.xml",
                                   "1002_comp.jpg", "1002_comp.nk", "1002_comp.xml"]
    # After a new root is saved in the panel, its directories are where a move goes.
    new_root = tmp_path / "new root"
    (new_root / "elsewhere").mkdir(parents=True)
    browser.push_settings.click()
    browser.input_snapshotbrowser_root.setText(str(new_root))
    browser.push_save_settings.click()
    select_rows(browser, (0, 0))
    move_action(browser.get_thumbnails_list()[0], "elsewhere").trigger()
    assert len(os.listdir(str(new_root / "elsewhere"))) == 3 and not os.path.exists(images[2])


def test_a_move_failing_half_way_puts_the_triad_back_and_says_where(rig, snap_dir, capsys):
    images = [write_snapshot(snap_dir, 1000 + i, comment="c") for i in range(2)][::-1]
    other = snap_dir.parent / "other"
    (other / "1000_comp.xml").mkdir(parents=True)
    before = snapshots_in(snap_dir)
    browser = rig.show_snapshot_browser()
    select_rows(browser, (0, 0), (1, 1))

    move_action(browser.get_thumbnails_list()[0], "other").trigger()

    # The first snapshot got there whole; the second stayed whole; the rows all stay.
    err = capsys.readouterr().err
    assert "1000_comp.xml" in err and "put back" in err
    assert snapshots_in(snap_dir) == [n for n in before if n.startswith("1000_")]
    assert sorted(snapshots_in(other)) == ["1000_comp.xml", "1001_comp.jpg", "1001_comp.nk",
                                           "1001_comp.xml"]
    assert browser.row_sources() == images


@pytest.mark.parametrize("flushed", [True, False], ids=["flush", "cancel"])
def test_flush_asks_then_empties_the_directory_but_keeps_folders(rig, snap_dir, asked, flushed):
    for i in range(3):
        write_snapshot(snap_dir, 1000 + i)
    (snap_dir / "notes.txt").write_text("x")
    (snap_dir / "keep").mkdir()
    asked.answer = flushed
    browser = rig.show_snapshot_browser()
    browser.combo_snapshot_dir.addItem("shot")

    thumb = browser.get_thumbnails_list()[1]
    thumb.show_right_click_menu()
    thumb.action_delete_all.trigger()

    assert asked == [("Flush snapshot directory",
                      "Flush the current snapshot directory 'shot'? This can't be undone!",
                      "flush 'shot'", "45,0,0")]
    assert (snapshots_in(snap_dir) == ["keep"]) == flushed
    assert (browser.table_thumbs.rowCount() == 0) == flushed
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)


def test_comment_editor_saves_keeps_the_flag_and_replaces_an_open_or_deleted_editor(rig, helper,
                                                                                   snap_dir):
    src = write_snapshot(snap_dir, 2000, flag="10,20,30")
    bare = write_snapshot(snap_dir, 1000)
    browser = rig.show_snapshot_browser()
    thumb = browser.get_thumbnails_list()[0]
    thumb.show_right_click_menu()
    thumb.action_comment.trigger()
    first = rig.commentwindow
    assert first.text_comment.toPlainText() == "" and first.isVisible()

    # The preview's menu opens the editor on the snapshot shown (the newest).
    browser.preview_image.show_right_click_menu()
    assert browser.preview_image.action_comment.isEnabled()
    browser.preview_image.action_comment.trigger()
    second = rig.commentwindow
    assert second is not first and not first.isVisible() and second.isVisible()
    assert second.metaxml == os.path.splitext(src)[0] + ".xml"
    second.text_comment.setPlainText("fix the edge\n<b>not bold</b>")
    second.push_save.click()

    assert not second.isVisible()
    assert helper.load_metadata(src) == {"comment": "fix the edge\n<b>not bold</b>",
                                         "flag": "10,20,30"}
    assert not browser.get_thumbnails_list()[0].label_comment.isHidden()

    # A snapshot without metadata gets its document at the first save; cancel writes nothing.
    bare_xml = os.path.splitext(bare)[0] + ".xml"
    rig.show_comment_window(bare, browser).push_cancel.click()
    assert not os.path.exists(bare_xml)
    # An editor deleted elsewhere is refused, and the next one replaces it.
    old = rig.show_comment_window(bare, browser)
    old.widget.deleteLater()
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
    with pytest.raises(RuntimeError, match="the comment window was closed"):
        old.set_comment()
    new = rig.show_comment_window(bare, browser)
    assert new is not old and new.isVisible()
    new.text_comment.setPlainText("kept")
    new.push_save.click()
    assert helper.load_metadata(bare) == {"comment": "kept", "flag": ""}
    assert os.path.isfile(bare_xml)


@pytest.mark.parametrize("case", ["preview", "preview forgotten", "no snapshot, closed"])
def test_a_resize_stores_the_size_and_lays_out_the_rows_with_or_without_a_preview(
        rig, helper, snap_dir, case):
    if case != "no snapshot, closed":
        write_snapshot(snap_dir, 1000, size=(400, 200))
    browser = rig.show_snapshot_browser()
    if case != "preview":
        helper.update_xml("current_snapshot_preview", None)

    for width in (1000, 1040):
        browser.widget.resize(width, 640)
        QtWidgets.QApplication.processEvents()
    if case == "no snapshot, closed":
        browser.push_close.click()

    assert helper.load_settings()["snapshotbrowser_size_current"] == "1040,640"
    # The rows follow the column, which now stretches with the table.
    rows_follow_the_column(browser, 400, 200)
