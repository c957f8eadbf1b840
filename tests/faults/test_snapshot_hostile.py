"""Hostile snapshot folders in front of the browser, each in a child process with a timeout: pipes
under snapshot names, metadata nested deep or full of entities, the window replaced during a
question, and moves killed half way."""

import os
import random
import signal
import time

import pytest
from cobaltRig import helper
from cobaltRig.qt import QtGui, QtWidgets

import snapshot_scenarios as scenarios


METADATA = "<?xml version='1.0'?>{}<snapshot><metadata><meta name='comment'>{}</meta>" \
           "<meta name='flag'>1,2,3</meta>{}</metadata></snapshot>"


def write_snapshot(directory, stem, metadata=METADATA.format("", "c", "")):
    path = os.path.join(str(directory), stem)
    image = QtGui.QImage(64, 32, QtGui.QImage.Format_RGB32)
    image.fill(QtGui.QColor(30, 60, 90))
    assert image.save(path + ".jpg", "JPG")
    for ext, text in ((".nk", "# nodes\n"), (".xml", metadata)):
        with open(path + ext, "w") as handle:
            handle.write(text)
    return path + ".jpg"


@pytest.fixture
def shots(tmp_path, settings_home, rig):
    directory = tmp_path / "snapshots" / "shot"
    directory.mkdir(parents=True)
    helper.update_settings({"snapshotbrowser_root": str(directory.parent),
                            "current_snapshot_dir": str(directory)})
    yield directory
    window = rig.__dict__.pop("snapshotbrowser", None)
    if window is not None:
        window.close()


@pytest.mark.parametrize("xml, reason", [
    (METADATA.format("", "deep", "<a>" * 1200 + "</a>" * 1200), "32 levels"),
    (METADATA.format("", "deep", "<a>" * 50000 + "</a>" * 50000), "32 levels"),
    (METADATA.format("", "deep", "<a>" * 200000 + "</a>" * 200000), "1 MB"),
    (METADATA.format('<!DOCTYPE s [<!ENTITY e "{}">]>'.format("x" * 100000), "&e;" * 100000, ""),
     "entities"),
], ids=["1200 deep", "50000 deep", "200000 deep", "entities"])
def test_hostile_metadata_is_refused_by_name_and_its_snapshot_shows_without_marks(
        shots, xml, reason):
    good = write_snapshot(shots, "1000_good")
    src = write_snapshot(shots, "2000_bad", xml)
    before = scenarios.tree(str(shots))

    outcome = scenarios.run("browse", src, timeout=30)

    assert outcome["rows"] == [[src, False, False], [good, True, True]]
    assert outcome["metadata"] == {"comment": "", "flag": ""} and not outcome["editor"]
    assert scenarios.tree(str(shots)) == before
    texts = outcome["told"] + outcome["console"]
    assert len(outcome["told"]) == 2 and len(outcome["console"]) == 2  # C++ and Python readers
    assert all("2000_bad.xml" in text and reason in text for text in texts), texts


def test_pipes_under_snapshot_names_are_not_read(shots):
    src = write_snapshot(shots, "1000_comp")
    os.remove(src[:-4] + ".xml")
    os.mkfifo(src[:-4] + ".xml")
    os.mkfifo(os.path.join(str(shots), "2000_pipe.jpg"))
    helper.update_xml("current_snapshot_preview", os.path.join(str(shots), "2000_pipe.jpg"))

    outcome = scenarios.run("browse", src, timeout=30)

    assert outcome["rows"] == [[src, False, False]]
    assert "1000_comp.xml" in outcome["told"][0] and not outcome["editor"]


def test_a_window_replaced_during_the_flush_question_flushes_and_the_new_one_shows_it(shots):
    for i in range(3):
        write_snapshot(shots, "{}_comp".format(1000 + i))

    outcome = scenarios.run("replace-during-flush")

    assert os.listdir(str(shots)) == [] and outcome["rows"] == []


def split_stems(*folders):
    stems = [{os.path.splitext(n)[0] for n in os.listdir(f)} for f in folders]
    return set.intersection(*stems)


def test_a_move_killed_half_way_is_finished_when_the_browser_opens_again(rig, shots):
    other = shots.parent / "other"
    other.mkdir()
    chance = random.Random(24)
    caught = 0
    for round_ in range(6):
        for i in range(150):
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
            if not os.WIFSTOPPED(os.waitpid(pid, os.WUNTRACED)[1]):
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
        assert len(os.listdir(str(shots)) + os.listdir(str(other))) == 450 * (round_ + 1)
        assert sorted(os.listdir(str(shots.parent))) == ["other", "shot"], "a note stayed"
        for name in os.listdir(str(shots)):
            os.rename(os.path.join(str(shots), name), os.path.join(str(other), name))
    assert caught >= 3, "the stops rarely met a move on its way"
