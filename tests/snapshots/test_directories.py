"""The browser's directory box: its entries, switching, and making and deleting directories."""

import os
import shutil

import pytest
from cobaltRig.qt import QtCore, QtWidgets

from conftest import write_jpg

pytestmark = pytest.mark.usefixtures("browser_slot")

TITLE, NEW, DELETE, DIVIDER = ("snapshot directory", "new snapshot directory",
                               "delete snapshot directory", "---------------")


def entries(browser):
    box = browser.combo_snapshot_dir
    return [box.itemText(i) for i in range(box.count())]


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
    QtWidgets.QApplication.processEvents()


@pytest.mark.parametrize("advanced, commands, outside", [
    ({}, [NEW, DELETE], False),
    ({"new_snapshot_directory": "True", "delete_snapshot_directory": "False"}, [NEW], False),
    ({"new_snapshot_directory": "true", "delete_snapshot_directory": "True"}, [DELETE], False),
    ({"new_snapshot_directory": "", "delete_snapshot_directory": "no"}, [], False),
    ({}, [NEW, DELETE], True),  # a current directory outside the root leaves the box on its title
])
def test_the_box_lists_the_commands_shown_then_the_directories_of_the_root(
        rig, helper, snap_dir, tmp_path, monkeypatch, advanced, commands, outside):
    root = snap_dir.parent
    for name in ("b shot", "a_shot", ".hidden"):
        (root / name).mkdir()
    (root / "notes.txt").write_text("")
    monkeypatch.setattr(helper, "parse_advanced_settings", lambda: dict(advanced))
    shown = write_jpg(snap_dir / "1700000000_shot.jpg")
    if outside:
        (tmp_path / "elsewhere").mkdir()
        write_jpg(tmp_path / "elsewhere" / "1700000000_x.jpg")
        helper.update_xml("current_snapshot_dir", str(tmp_path / "elsewhere"))

    browser = rig.show_snapshot_browser()

    listed = [n for n in os.listdir(str(root)) if os.path.isdir(os.path.join(str(root), n))]
    assert entries(browser) == [TITLE] + commands + [DIVIDER] + listed
    assert browser.combo_snapshot_dir.currentText() == (TITLE if outside else "shot")
    assert browser.row_sources() == ([] if outside else [shown])


def test_opening_selects_the_current_directory_and_switching_brings_rows_slider_and_preview(
        rig, helper, snap_dir):
    root = snap_dir.parent
    shown = [write_jpg(snap_dir / "17000000{}0_shot.jpg".format(i)) for i in range(3)][::-1]
    other = root / "other"
    other.mkdir()
    (root / "empty").mkdir()
    older, newer = (write_jpg(other / name) for name in ("1600000000_o.jpg", "1650000000_o.jpg"))
    browser = rig.show_snapshot_browser()
    slider, preview = browser.slider_versions, browser.preview_image
    assert browser.row_sources() == shown and slider.maximum() == 3 and preview.image == shown[0]
    slider.setValue(3)

    choose(browser, "other")

    assert browser.current_snapshot_dir == str(other)
    assert helper.load_settings()["current_snapshot_dir"] == str(other)
    assert browser.row_sources() == [newer, older]
    # The slider goes back to its first value, the newest snapshot of the new directory.
    assert slider.maximum() == 2 and slider.value() == 1
    assert preview.image == newer and preview.isVisible()
    assert helper.load_settings()["current_snapshot_preview"] == newer
    # The title and the divider do nothing.
    for text in (DIVIDER, TITLE):
        choose(browser, text)
        assert browser.current_snapshot_dir == str(other)

    choose(browser, "empty")
    assert slider.maximum() == 0 and not preview.isVisible()
    choose(browser, "shot")
    assert slider.maximum() == 3 and preview.image == shown[0] and preview.isVisible()


@pytest.mark.parametrize("script, typed, made, message", [
    ("/shows/abc/comp_v012.nk", "shot 020  final", "shot_020__final",
     "Successfully create snapshot directory 'shot_020__final'"),
    (None, "plain", "plain", "Successfully create snapshot directory 'plain'"),
    (None, None, None, None),
    (None, "", None, None),
    (None, "shot", None,
     "The snapshot directory 'shot' already exists. Please choose another name."),
    (None, "blocker/sub", None, "Cannot create snapshot directory. "),
    (None, "no root", None, "Please set your snapshot browser root first."),
], ids=["script name", "plain", "cancelled", "empty", "exists", "cannot be made", "no root"])
def test_a_new_directory_is_made_selected_and_named_or_nothing_changes(
        rig, nuke, helper, snap_dir, messages, script, typed, made, message):
    if script:
        nuke.root()["name"].setValue(script)
    root = snap_dir.parent
    (root / "blocker").write_text("")
    shown = write_jpg(snap_dir / "1700000000_shot.jpg")
    browser = rig.show_snapshot_browser()
    before = sorted(os.listdir(str(root)))
    suggested = []
    if typed == "no root":
        helper.update_xml("snapshotbrowser_root", "")
    else:
        answer_name(typed, suggested)

    choose(browser, NEW)

    if typed == "blocker/sub":
        [text] = messages
        assert text.startswith(message) and typed in text
    else:
        assert messages == ([message] if message else [])
    if made is None:
        assert sorted(os.listdir(str(root))) == before
        assert helper.load_settings()["current_snapshot_dir"] == str(snap_dir)
        if message is None:  # cancelled: the box and the table stay as they were
            assert browser.combo_snapshot_dir.currentText() == NEW
            assert browser.row_sources() == [shown]
        return
    assert suggested == [("Create new snapshot directory", "New snapshot directory name:",
                          "comp_v012" if script else "")]
    assert (root / made).is_dir()
    assert browser.combo_snapshot_dir.currentText() == made
    assert browser.current_snapshot_dir == str(root / made)
    assert helper.load_settings()["current_snapshot_dir"] == str(root / made)
    assert browser.row_sources() == []


@pytest.mark.parametrize("case", ["accepted", "declined", "the root", "removed meanwhile"])
def test_deleting_the_current_directory_asks_removes_it_and_leaves_none_current_or_nothing(
        rig, helper, snap_dir, asked, messages, comp, case):
    image = write_jpg(snap_dir / "1700000000_shot.jpg")
    helper.update_xml("current_snapshot_preview", image)
    (snap_dir.parent / "keep").mkdir()
    asked.answer = case != "declined"
    browser = rig.show_snapshot_browser()
    current = str(snap_dir.parent) if case == "the root" else str(snap_dir)
    helper.update_xml("current_snapshot_dir", current)
    if case == "removed meanwhile":
        shutil.rmtree(str(snap_dir))

    choose(browser, DELETE)

    if case == "removed meanwhile":
        assert messages == ["No such directory."] and "shot" not in entries(browser)
        assert helper.load_settings()["current_snapshot_dir"] is None
        return
    # The root itself is never deleted as a snapshot directory: not even asked.
    assert asked == ([] if case == "the root" else [(
        "Delete snapshot directory",
        "Are you sure to delete the current snapshot directory 'shot'? The directory "
        "including all snapshots will be removed. This can't be undone!",
        "delete 'shot'", "45,0,0")])
    if case != "accepted":
        assert snap_dir.is_dir() and helper.load_settings()["current_snapshot_dir"] == current
        if case == "declined":
            assert messages == [] and browser.combo_snapshot_dir.currentText() == DELETE
        else:
            assert len(messages) == 1 and "nothing was deleted" in messages[0]
        return
    assert not snap_dir.exists() and (snap_dir.parent / "keep").is_dir()
    assert messages == []
    assert entries(browser)[4:] == ["keep"]
    assert browser.combo_snapshot_dir.currentIndex() == 0
    assert helper.load_settings()["current_snapshot_dir"] is None
    assert not browser.preview_image.isVisible() and browser.preview_empty.isVisible()
    # No snapshot lands anywhere until a directory is chosen again.
    rig.snapshot()
    assert messages == ["Please set a snapshot directory before creating a snapshot."]
