"""Snapshot metadata files, flags and the snapshot directories."""

import os
import xml.etree.ElementTree as ET

import pytest

from cobaltRig import helper


@pytest.fixture
def snapshot(tmp_path):
    folder = tmp_path / "snaps" / "shot_010"
    folder.mkdir(parents=True)
    src = folder / "1700000000_shot_010.jpg"
    src.write_bytes(b"jpg")
    return str(src)


def metaxml(src):
    return os.path.splitext(src)[0] + ".xml"


class Thumb(object):
    def __init__(self, src):
        self.src, self.refreshed = src, 0

    def get_src(self):
        return self.src

    def set_meta_ui_elements(self):
        self.refreshed += 1


class Browser(object):
    def __init__(self, thumbs=()):
        self.thumbs, self.populated = list(thumbs), 0

    def get_thumbnails_list(self):
        return self.thumbs

    def populate_table_thumbs(self):
        self.populated += 1


@pytest.mark.parametrize("content", [None, "<broken", "<s><other/></s>"])
def test_missing_or_unreadable_metadata_reads_empty(snapshot, content):
    if content is not None:
        with open(metaxml(snapshot), "w") as handle:
            handle.write(content)
    assert helper.load_metadata(snapshot) == {"comment": "", "flag": ""}


def test_new_metadata_document_has_the_comment_entry(snapshot):
    path = metaxml(snapshot)
    helper.create_metaxml(path)

    with open(path, "rb") as handle:
        assert handle.read().startswith(b"<?xml version='1.0' encoding='utf-8'?>")
    metadata = ET.parse(path).getroot().find("metadata")
    assert [m.get("name") for m in metadata.findall("meta")].count("comment") == 1
    assert helper.load_metadata(snapshot) == {"comment": "", "flag": ""}


def test_flag_round_trip_keeps_the_comment(snapshot):
    path = metaxml(snapshot)
    with open(path, "w", encoding="utf-8") as handle:
        handle.write("<?xml version='1.0' encoding='utf-8'?><s><metadata>"
                     "<meta name='comment'>first line\nsecond, ünïcode</meta></metadata></s>")

    helper.set_flag(None, snapshot, ["205", "60", "60"])
    assert helper.load_metadata(snapshot) == {"comment": "first line\nsecond, ünïcode", "flag": "205,60,60"}

    helper.set_flag(None, snapshot, None)
    assert helper.load_metadata(snapshot) == {"comment": "first line\nsecond, ünïcode", "flag": ""}


def test_flag_creates_a_missing_metadata_file(snapshot):
    helper.set_flag(None, snapshot, ["1", "2", "3"])
    assert helper.load_metadata(snapshot) == {"comment": "", "flag": "1,2,3"}


def test_flag_redraws_the_thumbnail_of_the_snapshot(snapshot, tmp_path):
    mine, other = Thumb(snapshot), Thumb(str(tmp_path / "other.jpg"))
    browser = Browser([None, other, mine])

    helper.set_flag(browser, snapshot, ["1", "2", "3"])

    assert (mine.refreshed, other.refreshed, browser.populated) == (1, 0, 0)


def test_flag_rebuilds_the_table_when_the_thumbnail_is_not_found(snapshot):
    browser = Browser([])
    helper.set_flag(browser, snapshot, ["1", "2", "3"])
    assert browser.populated == 1


def test_snapshot_dirs_are_the_directories_under_the_root(tmp_path):
    root = tmp_path / "root"
    for name in ("shot_020", "shot_010", "with blank"):
        (root / name).mkdir(parents=True)
    (root / "notes.txt").write_text("x")
    helper.update_xml("snapshotbrowser_root", str(root))

    assert sorted(helper.get_snapshot_dirs()) == ["shot_010", "shot_020", "with blank"]
    helper.update_xml("snapshotbrowser_root", str(tmp_path / "missing"))
    assert helper.get_snapshot_dirs() == []
    # Without a root of its own the browser uses the default one.
    helper.update_xml("snapshotbrowser_root", None)
    os.makedirs(os.path.join(helper.get_default_snapshot_root_dir(), "first"))
    assert helper.get_snapshot_dirs() == ["first"]
