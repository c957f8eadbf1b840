"""Adding pools, from the settings window and from the pool box of an export window."""

import os
import types

import pytest
from cobaltRig.qt import QtWidgets

from cobaltRig import helper, settings


@pytest.fixture
def pool_dir(tmp_path):
    return str(tmp_path / "pools" / "studio")


@pytest.fixture
def export_window(qtbot):
    """What the pool panel is given: a window with a pool box on "-- new pool --", whose tool tip
    still names the pool on show, and a record of the window's reactions to pool changes."""
    combo = QtWidgets.QComboBox()
    qtbot.addWidget(combo)
    default_path = helper.load_settings()["pools"]["default"]
    combo.addItems(["default", settings.NEW_POOL_ENTRY])
    combo.setToolTip(default_path)
    combo.setCurrentIndex(1)
    reactions = []
    combo.currentIndexChanged.connect(lambda *args: reactions.append(combo.currentText()))
    return types.SimpleNamespace(combo_pool=combo, settings=helper.load_settings(),
                                 populate_tree=lambda: None, reactions=reactions,
                                 build_nodes_dir=lambda: reactions.append("class folder"))


@pytest.mark.parametrize(
    "name, path, words",
    [
        ("  studio ", "pools/studio", None),
        ("", "dir", "enter a name"),
        ("   ", "dir", "enter a name"),
        ("default", "dir", "already exists"),
        (settings.NEW_POOL_ENTRY, "dir", "reserved"),
        ("studio", "", "choose a directory"),
        ("studio", "a_file", "not a directory"),
    ],
)
def test_storing_a_pool_makes_its_directory_and_appends_it_or_leaves_the_store_alone(
        tmp_path, name, path, words):
    (tmp_path / "a_file").write_text("x")
    before = helper.load_settings()["pools"]
    path = str(tmp_path / path) if path else ""
    if words is None:
        assert settings.store_new_pool(name, path) == ("studio", path)
        assert sorted(os.listdir(path)) == ["nodes", "toolsets"]
        assert list(helper.load_settings()["pools"].items()) == list(before.items()) + [("studio", path)]
        return
    with pytest.raises(ValueError, match=words):
        settings.store_new_pool(name, path)
    assert helper.load_settings()["pools"] == before
    assert not (tmp_path / "dir").exists()


def fill_panel(name, path):
    def action(dialog):
        dialog.input_name.setText(name)
        dialog.input_path.setText(path)
        dialog.push_save.click()

    return action


def test_new_pool_appears_in_the_export_window_and_is_selected(answer_modal, export_window, pool_dir):
    answer_modal(fill_panel("studio", pool_dir))
    assert settings.show_panel_new_pool(None, exportwindow=export_window) == "studio"
    combo = export_window.combo_pool
    assert [combo.itemText(i) for i in range(combo.count())] == ["default", "studio", settings.NEW_POOL_ENTRY]
    assert combo.currentText() == "studio"
    # Once, to the new pool, never to "new pool" again; then the class folder is made there.
    assert export_window.reactions == ["studio", "class folder"]
    assert helper.load_settings()["pools"]["studio"] == pool_dir


def test_refused_name_keeps_the_panel_open_and_cancel_goes_back_to_the_pool_on_show(
        answer_modal, export_window, pool_dir, monkeypatch):
    messages = []

    def refuse_then_cancel(parent, text):
        messages.append(text)
        parent.push_cancel.click()

    monkeypatch.setattr(helper, "show_message_box", refuse_then_cancel)
    answer_modal(fill_panel("default", pool_dir))
    assert settings.show_panel_new_pool(None, exportwindow=export_window) is None
    assert messages == ["A pool named 'default' already exists. Please choose a different name."]
    assert list(helper.load_settings()["pools"]) == ["default"] and not os.path.exists(pool_dir)
    assert (export_window.combo_pool.currentText(), export_window.combo_pool.count()) == ("default", 2)


def test_settings_window_lists_pools_and_saves_switches(qtbot, pool_dir):
    settings.store_new_pool("studio", pool_dir)
    window = settings.Settings()
    qtbot.addWidget(window)
    window.show()
    window.raise_()
    tree = window.tree_pools
    assert [tree.topLevelItem(i).text(0) for i in range(tree.topLevelItemCount())] == ["default", "studio"]
    assert window.checks["look_icons"].isChecked()
    window.checks["look_icons"].setChecked(False)
    window.input_presetnodes_ignore.setText("Viewer, Dot")
    window.spin_icon_size.setValue(31)
    window.push_save.click()
    stored = helper.load_settings()
    assert stored["look_icons"] == "False"
    assert (stored["presetnodes_ignore"], stored["icon_size"]) == ("Viewer, Dot", "31")
    assert stored["release_hotkey_closes_slider"] == "True"
    assert not window.isVisible()
