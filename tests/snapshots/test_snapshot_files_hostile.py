"""Snapshot files as folders hold them: links and aliases, names nearly too long, comments of
blanks, flag colours out of range, an empty render width."""

import hashlib
import os

import pytest
from cobaltRig.qt import QtCore

from test_table import move_action, select_rows, write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")


def hashes(folder):
    files = sorted(os.path.join(str(folder), n) for n in os.listdir(str(folder)))
    return {p: hashlib.sha256(open(p, "rb").read()).hexdigest() for p in files}


@pytest.mark.parametrize("alias", ["link in the root", "root saved as an alias"])
def test_a_move_into_the_snapshots_own_directory_under_another_name_changes_nothing(
        rig, snap_dir, tmp_path, capsys, alias):
    images = [write_snapshot(snap_dir, 1000 + i, comment="c") for i in range(2)][::-1]
    target = "same" if alias == "link in the root" else "shot"
    os.symlink(str(snap_dir), str(snap_dir.parent / "same"))
    browser = rig.show_snapshot_browser()
    if alias == "root saved as an alias":
        os.symlink(str(snap_dir.parent), str(tmp_path / "alias"))
        browser.push_settings.click()
        browser.input_snapshotbrowser_root.setText(str(tmp_path / "alias"))
        browser.push_save_settings.click()
    before = hashes(snap_dir)
    select_rows(browser, (0, 0), (1, 1))

    move_action(browser.get_thumbnails_list()[0], target).trigger()

    assert hashes(snap_dir) == before and len(before) == 6
    assert browser.row_sources() == images and "move" not in capsys.readouterr().err


@pytest.mark.parametrize("outside", [True, False], ids=["outside the root", "sibling"])
def test_deleting_a_linked_snapshot_directory_removes_the_link_and_nothing_it_leads_to(
        rig, helper, snap_dir, tmp_path, asked, messages, outside):
    target = tmp_path / "team" if outside else snap_dir
    target.mkdir(exist_ok=True)
    for i in range(2):
        write_snapshot(target, 1000 + i, comment="keep")
    before = hashes(target)
    linked = snap_dir.parent / "linked"
    os.symlink(str(target), str(linked))
    helper.update_xml("current_snapshot_dir", str(linked))
    browser = rig.show_snapshot_browser()

    browser.ask_delete_snapshot_dir()

    assert asked and messages == [] and not os.path.lexists(str(linked))
    assert hashes(target) == before and len(before) == 6


def test_a_flag_colour_out_of_range_is_left_out_with_one_message(rig, helper, snap_dir, capsys):
    write_snapshot(snap_dir, 1000)
    root = helper.load_settings_tree()
    flags = root.find("flags")
    flags.clear()
    for text in ("300,0,0", "0,128,255", "1,2"):
        flags.append(flags.makeelement("flag", {}))
        flags[-1].text = text
    helper.write_xml(root, helper.get_settings_xml())
    thumb = rig.show_snapshot_browser().get_thumbnails_list()[0]

    for _ in range(2):
        thumb.show_right_click_menu()
        assert len(thumb.menu_flags.actions()) == 2 and thumb.menu_move.actions()

    err = capsys.readouterr().err
    assert err.count("'300,0,0'") == 1 and err.count("'1,2'") == 1 and "0,128,255" not in err


@pytest.mark.parametrize("stem, comment", [
    ("1000_comp", "   "), ("1000_comp", "\n\t \n"),
    ("1000_" + "s" * 244, "long"),  # its .xml: 253 characters, its temporaries must be shorter
])
def test_a_comment_is_kept_as_written_whatever_its_blanks_and_its_name(rig, helper, snap_dir,
                                                                        stem, comment):
    src = write_snapshot(snap_dir, 1000, comment=comment)
    for ext in (".jpg", ".nk", ".xml"):
        os.rename(src[:-4] + ext, os.path.join(str(snap_dir), stem + ext))
    src = os.path.join(str(snap_dir), stem + ".jpg")
    browser = rig.show_snapshot_browser()
    thumb = browser.get_thumbnails_list()[0]
    assert not thumb.label_comment.isHidden() and thumb.widget.toolTip() == comment

    editor = rig.show_comment_window(src, browser)
    assert editor.text_comment.toPlainText() == comment
    editor.text_comment.setPlainText(comment + " ")
    editor.push_save.click()
    helper.set_flag(browser, src, ["1", "2", "3"])

    assert rig.show_comment_window(src, browser).text_comment.toPlainText() == comment + " "
    assert helper.load_metadata(src)["flag"] == "1,2,3" and len(os.listdir(str(snap_dir))) == 3


def test_an_empty_render_width_names_its_cause_on_the_console(rig, helper, snap_dir, comp,
                                                              capsys):
    helper.update_xml("snapshot_render_width", "")
    browser = rig.show_snapshot_browser()
    capsys.readouterr()

    browser.push_snapshot.click()
    QtCore.QCoreApplication.processEvents()

    assert "ValueError: the snapshot render width ''" in capsys.readouterr().err
    assert os.listdir(str(snap_dir)) == []
