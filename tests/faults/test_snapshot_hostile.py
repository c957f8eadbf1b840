"""Hostile snapshot folders in front of the browser, each in a child process with a timeout (a crash
or a hang is a failed test): pipes under snapshot names, metadata nested deep or full of entities,
the window replaced during a question, and moves killed half way."""

import os
import random
import signal
import time

import pytest
from cobaltRig.qt import QtCore, QtGui, QtWidgets

import snapshot_scenarios as scenarios


def write_snapshot(directory, stem, comment="c", flag="1,2,3"):
    """A triad as the product writes it; gives the image path."""
    path = os.path.join(str(directory), stem)
    image = QtGui.QImage(64, 32, QtGui.QImage.Format_RGB32)
    image.fill(QtGui.QColor(30, 60, 90))
    assert image.save(path + ".jpg", "JPG")
    with open(path + ".nk", "w") as handle:
        handle.write("# nodes\n")
    with open(path + ".xml", "w") as handle:
        handle.write("<?xml version='1.0' encoding='UTF-8'?>\n<snapshot><metadata>"
                     "<meta name=\"comment\">{}</meta><meta name=\"flag\">{}</meta>"
                     "</metadata></snapshot>\n".format(comment, flag))
    return path + ".jpg"


@pytest.fixture
def shots(tmp_path, settings_home):
    from cobaltRig import helper

    root = tmp_path / "snapshots"
    directory = root / "shot"
    directory.mkdir(parents=True)
    helper.update_settings({"snapshotbrowser_root": str(root),
                            "current_snapshot_dir": str(directory)})
    return directory


def deep(levels):
    return "<a>" * levels + "</a>" * levels


def entities(times):
    return '<!DOCTYPE snapshot [<!ENTITY e "{}">]>'.format("x" * 100000), "&e;" * times


@pytest.mark.parametrize("levels", [1200, 50000, 200000])
def test_metadata_nested_deep_is_refused_by_name_and_the_snapshot_still_shows(shots, levels):
    good = write_snapshot(shots, "1000_good")
    src = write_snapshot(shots, "2000_deep")
    xml = src[:-4] + ".xml"
    with open(xml, "w") as handle:
        handle.write("<?xml version='1.0'?><snapshot><metadata><meta name=\"comment\">deep</meta>"
                     "<meta name=\"flag\">1,2,3</meta>{}</metadata></snapshot>".format(
                         deep(levels)))
    before = scenarios.tree(str(shots))

    outcome = scenarios.run("browse", src)

    assert outcome["rows"] == [{"src": src, "comment": False, "flag": False},
                               {"src": good, "comment": True, "flag": True}]
    assert outcome["metadata"] == {"comment": "", "flag": ""}
    assert scenarios.tree(str(shots)) == before
    texts = outcome["told"] + [line for line in outcome["console"].splitlines()
                               if line.startswith("cobaltRig")]
    assert texts and all("2000_deep.xml" in text for text in texts), texts
    assert outcome["editor"] is None


def test_metadata_with_entities_is_refused_at_once(shots):
    src = write_snapshot(shots, "2000_bomb")
    declaration, body = entities(100000)
    with open(src[:-4] + ".xml", "w") as handle:
        handle.write("<?xml version='1.0'?>{}<snapshot><metadata><meta name=\"comment\">{}</meta>"
                     "</metadata></snapshot>".format(declaration, body))
    before = scenarios.tree(str(shots))
    started = time.monotonic()

    outcome = scenarios.run("browse", src, timeout=30)

    assert time.monotonic() - started < 20
    assert outcome["rows"] == [{"src": src, "comment": False, "flag": False}]
    assert scenarios.tree(str(shots)) == before
    assert len(outcome["told"]) == 2  # the comment editor and the flag, each naming the file
    assert all("2000_bomb.xml" in text and "entities" in text for text in outcome["told"])


def test_pipes_under_snapshot_names_are_not_read(shots):
    from cobaltRig import helper

    src = write_snapshot(shots, "1000_comp")
    os.remove(src[:-4] + ".xml")
    os.mkfifo(src[:-4] + ".xml")
    os.mkfifo(os.path.join(str(shots), "2000_pipe.jpg"))
    helper.update_xml("current_snapshot_preview", os.path.join(str(shots), "2000_pipe.jpg"))
    before = scenarios.tree(str(shots))

    outcome = scenarios.run("browse", src, timeout=30)

    assert outcome["rows"] == [{"src": src, "comment": False, "flag": False}]
    assert any("1000_comp.xml" in text for text in outcome["told"])
    assert {p: v for p, v in scenarios.tree(str(shots)).items() if not p.endswith(".xml")} == {
        p: v for p, v in before.items() if not p.endswith(".xml")}


def test_a_window_replaced_during_the_flush_question_flushes_and_the_new_one_shows_it(shots):
    for i in range(3):
        write_snapshot(shots, "{}_comp".format(1000 + i))

    outcome = scenarios.run("replace-during-flush")

    assert os.listdir(str(shots)) == []
    assert outcome["rows"] == []


def split_stems(a, b):
    """Stems with files in both directories."""
    def stems(folder):
        return {os.path.splitext(n)[0] for n in os.listdir(folder) if not n.startswith(".")}
    return stems(a) & stems(b)


def test_a_move_killed_half_way_is_finished_when_the_browser_opens_again(rig, shots):
    other = shots.parent / "other"
    other.mkdir()
    count = 150
    chance = random.Random(24)
    caught = 0
    for round_ in range(6):
        for i in range(count):
            write_snapshot(shots, "{}_comp".format(100000 * (round_ + 1) + i))
        browser = rig.show_snapshot_browser()
        pid = os.fork()
        if pid == 0:
            try:
                table = browser.table_thumbs
                for row in range(table.rowCount()):  # one range per row: one snapshot each
                    table.setRangeSelected(QtWidgets.QTableWidgetSelectionRange(row, 0, row, 0),
                                           True)
                browser.get_thumbnails_list()[0].move_snapshot("other")
            finally:
                os._exit(0)
        # Stopped at random moments until one finds a snapshot on its way, then killed there.
        while True:
            time.sleep(chance.uniform(0, 0.0003))
            os.kill(pid, signal.SIGSTOP)
            _, status = os.waitpid(pid, os.WUNTRACED)
            if not os.WIFSTOPPED(status):
                break
            if split_stems(str(shots), str(other)):
                caught += 1
                os.kill(pid, signal.SIGKILL)
                os.kill(pid, signal.SIGCONT)
                os.waitpid(pid, 0)
                break
            os.kill(pid, signal.SIGCONT)

        rig.show_snapshot_browser()

        assert split_stems(str(shots), str(other)) == set(), "round {}".format(round_)
        names = os.listdir(str(shots)) + os.listdir(str(other))
        assert len(names) == 3 * count * (round_ + 1), "round {}: files lost".format(round_)
        assert not [n for n in os.listdir(str(shots.parent)) if n.startswith(".")]
        for name in os.listdir(str(shots)):
            os.rename(os.path.join(str(shots), name), os.path.join(str(other), name))
    assert caught >= 3, "the stops rarely met a move on its way"
    QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
