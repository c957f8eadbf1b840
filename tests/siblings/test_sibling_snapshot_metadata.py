"""Snapshot metadata files, flags and the snapshot directories."""

import os
import types
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


def thumb(src, redraws):
    return types.SimpleNamespace(get_src=lambda: src, set_meta_ui_elements=lambda: redraws.append(src))


@pytest.mark.parametrize("content", [None, "<broken", "<s><other/></s>"])
def test_missing_or_unreadable_metadata_reads_empty(snapshot, content):
    if content is not None:
        with open(metaxml(snapshot), "w") as handle:
            handle.write(content)
    assert helper.load_metadata(snapshot) == {"comment": "", "flag": ""}


@pytest.mark.parametrize("comment", [None, "first line\nsecond, ünïcode"])
def test_flag_round_trip_keeps_the_comment_and_makes_a_missing_file(snapshot, comment):
    if comment is not None:
        with open(metaxml(snapshot), "w", encoding="utf-8") as handle:
            handle.write("<?xml version='1.0' encoding='utf-8'?><s><metadata>"
                         "<meta name='comment'>{}</meta></metadata></s>".format(comment))
    helper.set_flag(None, snapshot, ["205", "60", "60"])
    assert helper.load_metadata(snapshot) == {"comment": comment or "", "flag": "205,60,60"}
    with open(metaxml(snapshot), "rb") as handle:
        assert handle.read().startswith(b"<?xml version='1.0' encoding='utf-8'?>")
    metadata = ET.parse(metaxml(snapshot)).getroot().find("metadata")
    assert [m.get("name") for m in metadata.findall("meta")].count("comment") == 1
    helper.set_flag(None, snapshot, None)
    assert helper.load_metadata(snapshot) == {"comment": comment or "", "flag": ""}


@pytest.mark.parametrize("shown", [True, False], ids=["redraws its thumbnail", "rebuilds the table"])
def test_flag_updates_the_browser(snapshot, tmp_path, shown):
    redraws, rebuilds = [], []
    thumbs = [None, thumb(str(tmp_path / "other.jpg"), redraws)]
    if shown:
        thumbs.append(thumb(snapshot, redraws))
    browser = types.SimpleNamespace(get_thumbnails_list=lambda: thumbs,
                                    populate_table_thumbs=lambda: rebuilds.append(1))
    helper.set_flag(browser, snapshot, ["1", "2", "3"])
    assert (redraws, rebuilds) == (([snapshot], []) if shown else ([], [1]))


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
