"""Snapshot files as real folders hold them: directories under links and aliases, names that are no
valid text or nearly too long for the file system, comments of blanks, flag colours out of range,
and settings that hold nothing a render can use. Every triad is hashed before and after."""

import hashlib
import os

import pytest
from cobaltRig.qt import QtCore

from test_table import move_action, select_rows, write_snapshot

pytestmark = pytest.mark.usefixtures("browser_slot")


def hashes(*folders):
    seen = {}
    for folder in folders:
        for name in sorted(os.listdir(str(folder))):
            path = os.path.join(str(folder), name)
            if os.path.isfile(path) and not os.path.islink(path):
                with open(path, "rb") as handle:
                    seen[path] = hashlib.sha256(handle.read()).hexdigest()
    return seen


@pytest.mark.parametrize("alias", ["link in the root", "root saved as an alias"])
def test_a_move_into_the_snapshots_own_directory_under_another_name_changes_nothing(
        rig, helper, snap_dir, tmp_path, capsys, alias):
    images = [write_snapshot(snap_dir, 1000 + i, comment="c") for i in range(2)][::-1]
    root = snap_dir.parent
    target = "shot"
    if alias == "link in the root":
        os.symlink(str(snap_dir), str(root / "same"))
        target = "same"
    browser = rig.show_snapshot_browser()
    if alias == "root saved as an alias":
        os.symlink(str(root), str(tmp_path / "alias"))
        browser.push_settings.click()
        browser.input_snapshotbrowser_root.setText(str(tmp_path / "alias"))
        browser.push_save_settings.click()
    before = hashes(snap_dir)
    select_rows(browser, (0, 0), (1, 1))

    move_action(browser.get_thumbnails_list()[0], target).trigger()

    assert hashes(snap_dir) == before and len(before) == 6
    assert browser.row_sources() == images
    assert "move" not in capsys.readouterr().err


@pytest.mark.parametrize("leads_to", ["a directory outside the root", "a sibling directory"])
def test_deleting_a_linked_snapshot_directory_removes_the_link_and_nothing_it_leads_to(
        rig, helper, snap_dir, tmp_path, asked, messages, leads_to):
    root = snap_dir.parent
    target = tmp_path / "team" if leads_to == "a directory outside the root" else snap_dir
    target.mkdir(exist_ok=True)
    for i in range(2):
        write_snapshot(target, 1000 + i, comment="keep")
    before = hashes(target)
    os.symlink(str(target), str(root / "linked"))
    helper.update_xml("current_snapshot_dir", str(root / "linked"))
    browser = rig.show_snapshot_browser()
    assert browser.combo_snapshot_dir.currentText() == "linked"

    browser.ask_delete_snapshot_dir()

    assert asked and messages == []
    assert not os.path.lexists(str(root / "linked"))
    assert hashes(target) == before and len(before) == 6
    assert browser.combo_snapshot_dir.findText("linked") == -1


def test_a_flag_colour_out_of_range_is_left_out_with_one_message(rig, helper, snap_dir, capsys):
    write_snapshot(snap_dir, 1000)
    root = helper.load_settings_tree()
    flags = root.find("flags")
    flags.clear()
    for text in ("300,0,0", "0,128,255", "1,2"):
        flags.append(flags.makeelement("flag", {}))
        flags[-1].text = text
    helper.write_xml(root, helper.get_settings_xml())
    browser = rig.show_snapshot_browser()
    thumb = browser.get_thumbnails_list()[0]

    for _ in range(2):
        thumb.show_right_click_menu()
        assert len(thumb.menu_flags.actions()) == 2  # "no flag" and the one good colour
        assert thumb.menu_move.actions() and thumb.action_delete.isEnabled()

    err = capsys.readouterr().err
    assert err.count("'300,0,0'") == 1 and err.count("'1,2'") == 1
    assert "'0,128,255'" not in err


@pytest.mark.parametrize("comment", ["   ", "\n\t \n", "  two  \n"])
def test_a_comment_keeps_its_blanks_in_the_mark_the_tool_tip_and_the_editor(
        rig, helper, snap_dir, comment):
    src = write_snapshot(snap_dir, 1000, comment=comment)
    browser = rig.show_snapshot_browser()
    thumb = browser.get_thumbnails_list()[0]
    assert not thumb.label_comment.isHidden() and thumb.widget.toolTip() == comment

    editor = rig.show_comment_window(src, browser)
    assert editor.text_comment.toPlainText() == comment
    editor.text_comment.setPlainText(comment + " ")
    editor.push_save.click()

    assert helper.load_metadata(src)["comment"] == comment + " "
    assert rig.show_comment_window(src, browser).text_comment.toPlainText() == comment + " "


def test_a_directory_name_that_is_no_valid_text_disables_only_its_own_entries(
        rig, helper, snap_dir):
    write_snapshot(snap_dir, 1000)
    root = snap_dir.parent
    os.mkdir(os.path.join(os.fsencode(str(root)), b"caf\xe9"))
    (root / "other").mkdir()
    browser = rig.show_snapshot_browser()
    box = browser.combo_snapshot_dir
    listed = [box.itemText(i) for i in range(box.count())]
    assert "shot" in listed and "other" in listed and len(listed) == 6
    thumb = browser.get_thumbnails_list()[0]

    thumb.show_right_click_menu()

    entries = {a.text(): a.isEnabled() for a in thumb.menu_move.actions()}
    assert entries.pop("other") and entries.pop("shot")
    assert list(entries.values()) == [False]
    move_action(thumb, "other").trigger()
    assert sorted(os.listdir(str(root / "other"))) == ["1000_comp.jpg", "1000_comp.nk"]


def test_a_snapshot_with_a_name_near_the_limit_takes_a_comment_and_a_flag(rig, helper, snap_dir):
    stem = "1000_" + "s" * 244  # the .xml is 253 characters long
    src = write_snapshot(snap_dir, 1000)
    long_src = os.path.join(str(snap_dir), stem + ".jpg")
    os.rename(src, long_src)
    os.rename(src[:-4] + ".nk", long_src[:-4] + ".nk")
    browser = rig.show_snapshot_browser()

    editor = rig.show_comment_window(long_src, browser)
    editor.text_comment.setPlainText("long")
    editor.push_save.click()
    helper.set_flag(browser, long_src, ["1", "2", "3"])
    editor = rig.show_comment_window(long_src, browser)
    editor.text_comment.setPlainText("longer")
    editor.push_save.click()

    assert helper.load_metadata(long_src) == {"comment": "longer", "flag": "1,2,3"}
    assert sorted(os.listdir(str(snap_dir))) == sorted(
        [stem + ".jpg", stem + ".nk", stem + ".xml"])


def test_an_empty_render_width_names_its_cause_on_the_console(rig, helper, snap_dir, comp,
                                                              capsys):
    helper.update_xml("snapshot_render_width", "")
    browser = rig.show_snapshot_browser()
    capsys.readouterr()

    browser.push_snapshot.click()
    QtCore.QCoreApplication.processEvents()

    err = capsys.readouterr().err
    assert "snapshot failed" in err and "ValueError: the snapshot render width ''" in err
    assert os.listdir(str(snap_dir)) == []
