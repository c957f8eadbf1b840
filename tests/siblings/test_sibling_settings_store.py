"""The settings store: where it lives, what a new one holds, and how it is read and rewritten."""

import os
import pathlib
import xml.etree.ElementTree as ET

import pytest
from cobaltRig.qt import QtGui

from cobaltRig import helper

def write_settings(text):
    path = helper.get_settings_xml()
    pathlib.Path(path).write_text(text, encoding="utf-8")
    return path


def test_home_follows_the_environment_at_each_call(tmp_path, monkeypatch):
    monkeypatch.setenv("HOME", str(tmp_path / "user"))
    monkeypatch.delenv("COBALTRIG_HOME")
    assert helper.get_settings_xml() == str(tmp_path / "user" / ".nuke" / "cobaltRig" / "settings.xml")
    for name in ("first", "second"):
        monkeypatch.setenv("COBALTRIG_HOME", str(tmp_path / name))
        path = helper.get_settings_xml()
        assert path == str(tmp_path / name / "settings.xml")
        assert pathlib.Path(path).read_bytes().startswith(b"<?xml version='1.0' encoding='utf-8'?>")
    assert os.path.isfile(str(tmp_path / "first" / "settings.xml"))


def test_new_store_has_usable_defaults_for_every_key():
    settings = helper.load_settings()
    for key in ("hide_disabled_items", "release_hotkey_closes_slider", "look_icons", "tooltips",
                "snapshotbrowser_thumbnail_scrollbar"):
        assert settings[key] in ("True", "False"), key
    for key in ("snapshotbrowser_size_current", "snapshotbrowser_size_custom"):
        width, height = (int(v) for v in settings[key].split(","))
        assert width >= 600 and height >= 400
    assert 5 <= int(settings["icon_size"]) <= 40 and 100 <= int(settings["snapshot_render_width"]) <= 2048
    assert settings["snapshot_selection"] in ("all nodes", "upstream nodes", "node selection")
    # The current pool is one of the pools and laid out, so the first windows open on a tree.
    pool = settings["pools"][settings["current_pool"]]
    assert os.path.isdir(os.path.join(pool, "nodes")) and os.path.isdir(os.path.join(pool, "toolsets"))
    assert settings["flags"]
    assert all(QtGui.QColor(*map(int, f.split(","))).isValid() for f in settings["flags"])


def test_old_file_reads_missing_keys_as_defaults_and_stays_untouched():
    path = write_settings(
        "<?xml version='1.0' encoding='utf-8'?>\n<cobaltRig><settings>"
        '<setting name="icon_size">12</setting></settings></cobaltRig>'
    )
    before = pathlib.Path(path).read_bytes()
    settings = helper.load_settings()
    assert (settings["icon_size"], settings["look_icons"]) == ("12", "True")
    assert settings["pools"] == {} and settings["flags"] == []
    assert pathlib.Path(path).read_bytes() == before


@pytest.mark.parametrize("key, value, expected", [
    ("icon_size", 33, "33"), ("current_snapshot_dir", "/shows/a b/snaps", "/shows/a b/snaps"),
    ("current_snapshot_dir", None, None), ("current_snapshot_preview", "", None),
    ("snapshotbrowser_root", None, ""), ("presetnodes_ignore", "", ""),
    ("snapshot_render_width", "é/ü", "é/ü"), ("a_key_of_a_later_version", "x", "x"),
])
def test_update_xml_round_trip(key, value, expected):
    helper.update_xml("current_snapshot_dir", "/before")
    stale = helper.load_settings()
    stale["pools"]["mine"] = "/tmp"
    helper.update_xml(key, value)
    fresh = helper.load_settings()
    assert fresh[key] == expected
    assert list(fresh["pools"]) == ["default"]


def test_update_xml_sets_every_element_of_a_duplicated_key_keeps_the_rest_and_lays_out_once():
    path = write_settings(
        "<cobaltRig><settings><setting name='icon_size'>1</setting>"
        "<setting name='x'> two  blanks </setting><setting name='icon_size'>2</setting></settings>"
        "</cobaltRig>"
    )
    os.chmod(path, 0o640)
    helper.update_xml("icon_size", "30")
    once = pathlib.Path(path).read_bytes()
    helper.update_xml("icon_size", "30")
    assert pathlib.Path(path).read_bytes() == once and b"\n    <setting" in once
    texts = [(e.get("name"), e.text) for e in ET.parse(path).getroot().iter("setting")]
    assert texts == [("icon_size", "30"), ("x", " two  blanks "), ("icon_size", "30")]
    assert os.stat(path).st_mode & 0o777 == 0o640


def test_failed_write_leaves_the_old_file_and_no_leftovers(monkeypatch):
    path = helper.get_settings_xml()
    helper.update_xml("icon_size", "11")
    before = pathlib.Path(path).read_bytes()

    def refuse(src, dst):
        raise OSError("disk full")

    monkeypatch.setattr(os, "replace", refuse)
    with pytest.raises(OSError):
        helper.update_xml("icon_size", "12")
    monkeypatch.undo()
    assert pathlib.Path(path).read_bytes() == before
    assert [n for n in os.listdir(os.path.dirname(path)) if n != "pools"] == ["settings.xml"]


def test_pools_and_flags_keep_file_order():
    write_settings(
        "<cobaltRig><settings/>"
        "<pools><pool name='zeta'>/z</pool><pool name='alpha'>/a</pool><pool name='mid'>/m</pool></pools>"
        "<flags><flag>1,2,3</flag><flag>9,9,9</flag><flag>0,0,0</flag></flags></cobaltRig>"
    )
    settings = helper.load_settings()
    assert list(settings["pools"].items()) == [("zeta", "/z"), ("alpha", "/a"), ("mid", "/m")]
    assert settings["flags"] == ["1,2,3", "9,9,9", "0,0,0"]
    helper.add_pool("beta", "/b")
    helper.remove_pool("alpha")
    assert list(helper.load_settings()["pools"]) == ["zeta", "mid", "beta"]


def test_advanced_settings_and_hotkeys(settings_home):
    hotkeys = helper.load_hotkeys()
    # The look slider closes when E is released, so its own hotkey must be E; the resolution
    # slider compares the released key with its single upper-case letter.
    assert hotkeys["looks_slider"] == "E"
    assert len(hotkeys["resolution_slider"]) == 1 and hotkeys["resolution_slider"] not in ("E", "")
    (settings_home / "advanced_settings.xml").write_text(
        "<cobaltRig><advanced><setting name='items_delete'>False</setting></advanced></cobaltRig>")
    (settings_home / "hotkeys.xml").write_text(
        "<cobaltRig><hotkeys><hotkey name='resolution_slider'>u</hotkey></hotkeys></cobaltRig>")
    advanced = helper.parse_advanced_settings()
    assert (advanced["items_delete"], advanced["items_rename"]) == ("False", "True")
    hotkeys = helper.load_hotkeys()
    assert (hotkeys["resolution_slider"], hotkeys["looks_slider"]) == ("U", "E")
