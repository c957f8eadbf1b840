"""What menu.py registers in the host when the host starts."""

import importlib
import os
import sys
import types

import pytest
from cobaltRig.qt import QtWidgets

from cobaltRig import helper

# The operation each entry runs, and the hotkey it carries.
HOTKEYS = {
    "batch_set_look": "store_look", "delete_selected_nodes_looks": "delete_looks",
    "show_looks_slider": "looks_slider", "show_look_diff": "look_diff",
    "showRezSlider": "resolution_slider",
    "export_nodes": "export_nodes", "import_preset": "import_preset", "snapshot": "snapshot",
    "show_snapshot_browser": "snapshot_browser", "show_settings": "settings",
}


@pytest.fixture
def entries(nuke, monkeypatch, qapp):
    """The add-on's menu items after start-up, help left out, and the compiled module replaced by
    one that records which operation ran."""
    monkeypatch.setattr(sys, "path", list(sys.path))
    monkeypatch.delitem(sys.modules, "cobaltRig.menu", raising=False)
    visible_before = set(w for w in QtWidgets.QApplication.topLevelWidgets() if w.isVisible())
    importlib.import_module("cobaltRig.menu")
    assert [w for w in QtWidgets.QApplication.topLevelWidgets()
            if w.isVisible() and w not in visible_before] == []
    module = types.ModuleType("cobaltRig.cobaltRig_w")
    module.calls = []
    for operation in HOTKEYS:
        setattr(module, operation, lambda operation=operation: module.calls.append(operation))
    monkeypatch.setitem(sys.modules, "cobaltRig.cobaltRig_w", module)

    def leaves(menu):
        for item in menu.items():
            if isinstance(item, nuke.Menu):
                yield from leaves(item) if item.name() != "help" else ()
            elif item.name():
                yield item

    yield module, list(leaves(nuke.menu("Nuke").findItem("cobaltRig")))
    nuke.menu("Nuke").removeItem("cobaltRig")


def test_each_entry_runs_its_operation_with_its_hotkey_and_finds_the_icons(entries, nuke):
    assert os.path.isfile(os.path.join(nuke.pluginPath()[0], "look_star.png"))
    module, items = entries
    ran = {}
    for item in items:
        item.invoke()
        ran[module.calls.pop()] = item.shortcut()
    hotkeys = helper.load_hotkeys()
    assert len(items) == len(ran) and ran == {op: hotkeys[key] for op, key in HOTKEYS.items()}


def test_an_operation_missing_from_the_build_is_reported_not_raised(entries, host, monkeypatch):
    module, items = entries
    monkeypatch.delattr(module, "snapshot")
    snapshot = next(item for item in items if item.name() == "take snapshot")
    assert snapshot.invoke() is None
    assert host.messages == ["'snapshot' isn't available in this version of cobaltRig."]
