"""What menu.py registers in the host when the host starts."""

import importlib
import os
import sys
import types

import pytest
from PySide2 import QtWidgets

from cobaltRig import helper


class Menu(object):
    def __init__(self, name):
        self.name, self.commands, self.menus = name, {}, {}

    def addMenu(self, name, icon=None, tooltip=None, index=None):
        return self.menus.setdefault(name, Menu(name))

    def addCommand(self, name, command, shortcut="", icon="", tooltip="", index=-1):
        self.commands[name] = (command, shortcut, icon)

    def addSeparator(self):
        pass


@pytest.fixture
def started_host(monkeypatch, qapp):
    nuke = types.ModuleType("nuke")
    nuke.menus = {}
    nuke.plugin_paths = []
    nuke.messages = []
    nuke.menu = lambda name: nuke.menus.setdefault(name, Menu(name))
    nuke.pluginAddPath = nuke.plugin_paths.append
    nuke.message = nuke.messages.append
    monkeypatch.setitem(sys.modules, "nuke", nuke)
    monkeypatch.delitem(sys.modules, "cobaltRig.menu", raising=False)
    visible_before = set(w for w in QtWidgets.QApplication.topLevelWidgets() if w.isVisible())
    importlib.import_module("cobaltRig.menu")
    nuke.new_windows = [w for w in QtWidgets.QApplication.topLevelWidgets()
                        if w.isVisible() and w not in visible_before]
    return nuke


def commands(host):
    return host.menus["Nuke"].menus["cobaltRig"].commands


def named(command, operation):
    return getattr(command, "__name__", "") == operation


def test_start_up_registers_without_opening_anything(started_host):
    assert started_host.new_windows == []
    assert len(started_host.plugin_paths) == 1
    assert os.path.isfile(os.path.join(started_host.plugin_paths[0], "look_star.png"))


@pytest.mark.parametrize("operation, hotkey", [
    ("batch_set_look", "store_look"), ("delete_selected_nodes_looks", "delete_looks"),
    ("show_looks_slider", "looks_slider"), ("showRezSlider", "resolution_slider"),
    ("export_nodes", "export_nodes"), ("import_preset", "import_preset"), ("snapshot", "snapshot"),
    ("show_snapshot_browser", "snapshot_browser"), ("show_settings", "settings"),
])
def test_each_entry_calls_its_operation_with_its_hotkey(started_host, monkeypatch, operation, hotkey):
    calls = []
    module = types.ModuleType("cobaltRig.cobaltRig_w")
    setattr(module, operation, lambda: calls.append(operation))
    monkeypatch.setitem(sys.modules, "cobaltRig.cobaltRig_w", module)
    entries = [(cmd, key) for cmd, key, icon in commands(started_host).values() if named(cmd, operation)]
    assert len(entries) == 1
    command, shortcut = entries[0]
    assert shortcut == helper.load_hotkeys()[hotkey]
    command()
    assert calls == [operation]


def test_an_operation_missing_from_the_build_is_reported_not_raised(started_host, monkeypatch):
    monkeypatch.setitem(sys.modules, "cobaltRig.cobaltRig_w", types.ModuleType("cobaltRig.cobaltRig_w"))
    command = [cmd for cmd, key, icon in commands(started_host).values() if named(cmd, "snapshot")][0]
    assert command() is None
    assert len(started_host.messages) == 1 and "snapshot" in started_host.messages[0]
