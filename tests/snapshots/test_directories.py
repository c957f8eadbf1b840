"""The browser's directory box: its entries, switching, and making and deleting directories."""

import os

import pytest
from cobaltRig.qt import QtCore, QtWidgets

from conftest import write_jpg

pytestmark = pytest.mark.usefixtures("browser_slot")

TITLE, NEW, DELETE, DIVIDER = ("snapshot directory", "new snapshot directory",
                               "delete snapshot directory", "---------------")


def entries(browser):
    box = browser.combo_snapshot_dir
    return [box.itemText(i) for i in range(box.count())]


def jpg(directory, stem):
    return write_jpg(directory / (stem + ".jpg"))


def answer_name(name, suggested=None):
    """Types `name` into the next name dialog (None cancels it); records the suggestion."""
    def answer():
        dialog = QtWidgets.QApplication.activeModalWidget()
        if not isinstance(dialog, QtWidgets.QInputDialog):
            QtCore.QTimer.singleShot(10, answer)
            return
        if suggested is not None:
            suggested.append((dialog.windowTitle(), dialog.labelText(), dialog.textValue()))
        if name is None:
            dialog.reject()
        else:
            dialog.setTextValue(name)
            dialog.accept()

    QtCore.QTimer.singleShot(0, answer)


def choose(browser, text):
    box = browser.combo_snapshot_dir
    box.setCurrentIndex(box.findText(text))


@pytest.mark.parametrize("advanced, commands", [
    ({}, [NEW, DELETE]),
    ({"new_snapshot_directory": "True", "delete_snapshot_directory": "False"}, [NEW]),
    ({"new_snapshot_directory": "true", "delete_snapshot_directory": "True"}, [DELETE]),
    ({"new_snapshot_directory": "", "delete_snapshot_directory": "no"}, []),
])
def test_the_box_lists_the_commands_shown_then_the_directories_of_the_root(
        rig, helper, snap_dir, monkeypatch, advanced, commands):
    root = snap_dir.parent
    for name in ("b shot", "a_shot", ".hidden"):
        (root / name).mkdir()
    (root / "notes.txt").write_text("")
    monkeypatch.setattr(helper, "parse_advanced_settings", lambda: dict(advanced))

    browser = rig.show_snapshot_browser()

    listed = [n for n in os.listdir(str(root)) if os.path.isdir(os.path.join(str(root), n))]
    assert entries(browser) == [TITLE] + commands + [DIVIDER] + listed
    assert browser.combo_snapshot_dir.currentText() == "shot"


def test_opening_selects_the_current_directory_and_switching_fills_the_table(
        rig, helper, snap_dir):
    root = snap_dir.parent
    shown = jpg(snap_dir, "1700000000_shot")
    other = root / "other"
    other.mkdir()
    older, newer = jpg(other, "1600000000_other"), jpg(other, "1650000000_other")
    browser = rig.show_snapshot_browser()
    assert browser.row_sources() == [shown]
    browser.slider_versions.setMaximum(5)
    browser.slider_versions.setValue(3)

    choose(browser, "other")

    assert browser.current_snapshot_dir == str(other)
    assert helper.load_settings()["current_snapshot_dir"] == str(other)
    assert browser.row_sources() == [newer, older]
    # The slider goes back to its first value, the newest snapshot of the new directory.
    assert browser.slider_versions.value() == 1 and browser.preview_image.image == newer
    # The title and the divider do nothing.
    for text in (DIVIDER, TITLE):
        choose(browser, text)
        assert browser.current_snapshot_dir == str(other)


def test_a_current_directory_outside_the_root_leaves_the_box_on_its_title(rig, helper,
                                                                          snap_dir, tmp_path):
    elsewhere = tmp_path / "elsewhere"
    elsewhere.mkdir()
    jpg(elsewhere, "1700000000_x")
    helper.update_xml("current_snapshot_dir", str(elsewhere))

    browser = rig.show_snapshot_browser()

    assert browser.combo_snapshot_dir.currentText() == TITLE
    assert browser.row_sources() == []


@pytest.mark.parametrize("script, typed, made", [
    ("/shows/abc/comp_v012.nk", "shot 020  final", "shot_020__final"),
    (None, "plain", "plain"),
])
def test_a_new_directory_is_made_selected_and_named_in_the_message(
        rig, nuke, helper, snap_dir, messages, script, typed, made):
    if script:
        nuke.root()["name"].setValue(script)
    root = snap_dir.parent
    browser = rig.show_snapshot_browser()
    suggested = []
    answer_name(typed, suggested)

    choose(browser, NEW)

    expected = "comp_v012" if script else ""
    assert suggested == [("Create new snapshot directory", "New snapshot directory name:",
                          expected)]
    assert (root / made).is_dir()
    assert messages == ["Successfully create snapshot directory '{}'".format(made)]
    assert browser.combo_snapshot_dir.currentText() == made
    assert browser.current_snapshot_dir == str(root / made)
    assert helper.load_settings()["current_snapshot_dir"] == str(root / made)
    assert browser.row_sources() == []


@pytest.mark.parametrize("typed", [None, ""])
def test_a_cancelled_or_empty_name_changes_nothing(rig, helper, snap_dir, messages, typed):
    shown = jpg(snap_dir, "1700000000_shot")
    browser = rig.show_snapshot_browser()
    before = sorted(os.listdir(str(snap_dir.parent)))
    answer_name(typed)

    choose(browser, NEW)

    assert sorted(os.listdir(str(snap_dir.parent))) == before and messages == []
    assert browser.combo_snapshot_dir.currentText() == NEW
    assert helper.load_settings()["current_snapshot_dir"] == str(snap_dir)
    assert browser.row_sources() == [shown]


@pytest.mark.parametrize("typed, text", [
    ("shot", "The snapshot directory 'shot' already exists. Please choose another name."),
    ("blocker/sub", "Cannot create snapshot directory. "),
    (None, "Please set your snapshot browser root first."),
], ids=["exists", "cannot be made", "no root"])
def test_a_new_directory_that_cannot_be_made_says_why(rig, helper, snap_dir, messages, typed,
                                                      text):
    (snap_dir.parent / "blocker").write_text("")
    browser = rig.show_snapshot_browser()
    if typed is None:
        helper.update_xml("snapshotbrowser_root", "")
    else:
        answer_name(typed)

    choose(browser, NEW)

    [message] = messages
    if typed == "blocker/sub":
        assert message.startswith(text) and typed in message
    else:
        assert message == text
    assert helper.load_settings()["current_snapshot_dir"] == str(snap_dir)


def test_deleting_the_current_directory_asks_removes_it_and_leaves_none_current(
        rig, helper, snap_dir, asked, messages, comp):
    image = jpg(snap_dir, "1700000000_shot")
    helper.update_xml("current_snapshot_preview", image)
    (snap_dir.parent / "keep").mkdir()
    browser = rig.show_snapshot_browser()

    choose(browser, DELETE)

    assert asked == [("Delete snapshot directory",
                      "Are you sure to delete the current snapshot directory 'shot'? The directory "
                      "including all snapshots will be removed. This can't be undone!",
                      "delete 'shot'", "45,0,0")]
    assert not snap_dir.exists() and (snap_dir.parent / "keep").is_dir()
    assert messages == []
    assert entries(browser)[4:] == ["keep"]
    assert browser.combo_snapshot_dir.currentIndex() == 0
    assert helper.load_settings()["current_snapshot_dir"] is None
    assert not browser.preview_image.isVisible() and browser.preview_empty.isVisible()
    # No snapshot lands anywhere until a directory is chosen again.
    rig.snapshot()
    assert messages == ["Please set a snapshot directory before creating a snapshot."]


def test_a_declined_question_keeps_everything(rig, helper, snap_dir, asked, messages):
    asked.answer = False
    browser = rig.show_snapshot_browser()

    choose(browser, DELETE)

    assert len(asked) == 1 and snap_dir.is_dir() and messages == []
    assert helper.load_settings()["current_snapshot_dir"] == str(snap_dir)
    assert browser.combo_snapshot_dir.currentText() == DELETE


def test_a_directory_removed_meanwhile_is_reported_and_still_unset(rig, helper, snap_dir,
                                                                   asked, messages):
    browser = rig.show_snapshot_browser()
    snap_dir.rmdir()

    choose(browser, DELETE)

    assert messages == ["No such directory."]
    assert helper.load_settings()["current_snapshot_dir"] is None
    assert "shot" not in entries(browser)


def test_the_root_itself_is_never_deleted_as_a_snapshot_directory(rig, helper, snap_dir,
                                                                  asked, messages):
    browser = rig.show_snapshot_browser()
    helper.update_xml("current_snapshot_dir", str(snap_dir.parent))

    choose(browser, DELETE)

    assert asked == [] and snap_dir.is_dir()
    assert len(messages) == 1 and "nothing was deleted" in messages[0]
