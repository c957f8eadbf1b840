"""How the settings files are written: links kept, a link to nowhere refused, a read-only folder
worked read-only, and a file that went bad under an open window named in the report."""

import os
import subprocess
import sys
import textwrap

import pytest
from cobaltRig import helper

import fault_scenarios as scenarios


@pytest.fixture
def pool(tmp_path):
    folder = tmp_path / "pool"
    (folder / "nodes").mkdir(parents=True)
    (folder / "toolsets").mkdir()
    helper.save_pools({"main": str(folder)})
    helper.update_xml("current_pool", "main")
    return folder


def by_helper(rig):
    helper.add_pool("extra", "/tmp/extra")


def by_module(rig):
    """The compiled module's own rewrite: the import window's icon size."""
    window = rig.import_preset()
    try:
        window.slider_size.setValue(window.slider_size.value() + 2)
    finally:
        window.close()


WRITERS = [pytest.param(by_helper, id="helper"), pytest.param(by_module, id="module")]


@pytest.mark.parametrize("write", WRITERS)
@pytest.mark.parametrize("dangling", [False, True], ids=["link", "link to nowhere"])
def test_a_linked_settings_file_stays_a_link_and_a_link_to_nowhere_is_refused(
        rig, pool, settings_home, tmp_path, capsys, write, dangling):
    helper.parse_advanced_settings()
    helper.load_hotkeys()
    settings = settings_home / "settings.xml"
    team = tmp_path / ("unmounted" if dangling else "team") / "settings.xml"
    if dangling:
        settings.unlink()
    else:
        team.parent.mkdir()
        os.replace(settings, team)
    before = None if dangling else team.read_bytes()
    settings.symlink_to(team)
    helper._reported.clear()

    try:
        write(rig)
    except helper.NotSavedError as error:
        reported = str(error)
    else:
        reported = capsys.readouterr().err  # a window's reaction reports to the console
    assert settings.is_symlink() and os.readlink(settings) == str(team)
    if dangling:
        assert str(settings) in reported and str(team) in reported and "does not exist" in reported
        assert not team.exists()
    else:
        assert team.read_bytes() != before and reported == ""
    assert [p.name for p in settings_home.iterdir() if p.name.startswith(".")] == []


def test_a_settings_file_emptied_under_an_open_window_is_named(rig, pool, settings_home, capsys):
    window = rig.import_preset()
    try:
        (settings_home / "settings.xml").write_bytes(b"")
        window.slider_size.setValue(window.slider_size.value() + 2)
    finally:
        window.close()
    err = capsys.readouterr().err
    assert "settings.xml" in err and "no element found" in err
    assert (settings_home / "settings.xml").read_bytes() == b""


def test_a_read_only_settings_folder_works_read_only(tmp_path):
    """In a child that file modes bind: root writes anywhere."""
    home = str(tmp_path / "home")
    os.mkdir(home)
    os.chmod(home, 0o555)
    code = textwrap.dedent("""
        import os, sys
        os.environ["COBALTRIG_HOME"] = sys.argv[1]
        import nuke
        import cobaltRig.menu
        from cobaltRig import helper
        from cobaltRig import cobaltRig_w as rig
        assert helper.load_settings()["icon_size"] == dict(helper.DEFAULT_SETTINGS)["icon_size"]
        assert helper.load_hotkeys()["import_preset"] == "alt+shift+I"
        try:
            helper.update_xml("icon_size", "30")
        except helper.NotSavedError as error:
            print("REFUSED", error)
        window = rig.import_preset()
        window.slider_size.setValue(33)
        window.close()
        print("ALIVE")
    """)

    try:
        result = subprocess.run(scenarios.unprivileged([sys.executable, "-c", code, home]),
                                capture_output=True, text=True, timeout=120)
        assert result.returncode == 0, result.stderr
        assert "ALIVE" in result.stdout
        refused = [line for line in result.stdout.splitlines() if line.startswith("REFUSED")]
        assert refused and os.path.join(home, "settings.xml") in refused[0]
        assert "not writable" in refused[0]
        # The window's own rewrite is refused the same way, on the console.
        assert result.stderr.count("cannot save '{}'".format(os.path.join(home, "settings.xml")))
        assert os.listdir(home) == []
    finally:
        os.chmod(home, 0o755)
