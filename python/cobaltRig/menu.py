"""Registers cobaltRig in the host at start-up: the menu entries with their hotkeys, and the icons
folder on the plugin path so the bare image names in look buttons resolve.

The host runs this file when it starts. It only registers: no window opens and the compiled module
isn't loaded until an entry is used. Each entry looks its operation up at that moment, so an
entry whose operation a given build lacks reports that when it's chosen instead of breaking the
whole menu.
"""

import importlib
import os
import sys

import nuke


def _import_helper():
    try:
        return importlib.import_module("cobaltRig.helper")
    except ImportError:
        # The host may run this file from inside the package folder, with only that folder on
        # its path; the package itself then has to be found from here.
        here = globals().get("__file__")
        if not here:
            raise
        sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(here))))
        return importlib.import_module("cobaltRig.helper")


helper = _import_helper()

MENU_NAME = "cobaltRig"

# (menu path, operation of cobaltRig_w, hotkey key, icon file)
ENTRIES = (
    ("looks/store look of selected nodes", "batch_set_look", "store_look", "look_star.png"),
    ("looks/delete looks of selected nodes", "delete_selected_nodes_looks", "delete_looks",
     "look_delete.png"),
    ("looks/look slider", "show_looks_slider", "looks_slider", "slider.png"),
    ("looks/compare looks", "show_look_diff", "look_diff", "look_update.png"),
    ("viewer/resolution slider", "showRezSlider", "resolution_slider", "resolution.png"),
    ("presets/export nodes", "export_nodes", "export_nodes", "look_export.png"),
    ("presets/import preset", "import_preset", "import_preset", "look_import.png"),
    ("snapshots/take snapshot", "snapshot", "snapshot", "snapshot.png"),
    ("snapshots/snapshot browser", "show_snapshot_browser", "snapshot_browser", "eye.png"),
    ("settings", "show_settings", "settings", "settings.png"),
)


def run_entry(operation):
    """Call an operation of the compiled module, loading the module on first use."""
    module = importlib.import_module("cobaltRig.cobaltRig_w")
    function = getattr(module, operation, None)
    if function is None:
        nuke.message("'{}' isn't available in this version of cobaltRig.".format(operation))
        return None
    return function()


def _command(operation):
    def command():
        return run_entry(operation)

    command.__name__ = operation
    return command


def register():
    """Add the icons folder to the plugin path and the cobaltRig menu to the host's menu bar."""
    plugin_add_path = getattr(nuke, "pluginAddPath", None)
    if plugin_add_path is not None:
        plugin_add_path(helper.ICONS_DIR)

    try:
        hotkeys = helper.load_hotkeys()
    except helper.NotReadError as error:
        # A broken hotkeys file must not cost the artist the whole menu.
        sys.stderr.write("{}; the menu uses the default hotkeys\n".format(error))
        hotkeys = dict(helper.DEFAULT_HOTKEYS)
    # Everything after the name goes by keyword: some host versions take nothing else.
    menu = nuke.menu("Nuke").addMenu(MENU_NAME, icon="logo.png")
    for path, operation, hotkey, icon in ENTRIES:
        if path == "settings":
            menu.addSeparator()
        menu.addCommand(path, _command(operation), shortcut=hotkeys.get(hotkey, ""), icon=icon)
    menu.addCommand("help/changelog", helper.show_changelog, icon="help.png")
    menu.addCommand("help/about", helper.show_about_window, icon="logo.png")
    return menu


register()
