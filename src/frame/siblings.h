#pragma once
// Typed C++ view of the package's sibling modules `helper` and `settings`.
//
// Like the host facade, every operation is looked up on its module when it is called, so a user, a
// test or a newer sibling module can replace it. Windows handed to a sibling as a Qt parent go over
// as their PySide objects. Windows handed over with their own operations go as pybind11 objects,
// through the checking converter that window_slots.h declares for every window source file.

#include "frame/window_slots.h"

#include <pybind11/pybind11.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class QWidget;

namespace cobaltrig::siblings {

namespace py = pybind11;

/// Imports `helper` and `settings` of the package this module belongs to; called while loading.
void import_modules(const std::string& package);

py::module_ helper();

/// True while `helper.<name>` is still the function the package came with, so that a caller may
/// do the same work natively; false once a studio or a test replaced it.
bool is_original(const char* name);
py::module_ settings_module();

/// One reading of the settings store. Plain keys are text or absent; absent is not the same as
/// empty wherever a caller cares.
struct Settings {
    std::map<std::string, std::optional<std::string>> values;
    /// Pool name to directory, in the store's order.
    std::vector<std::pair<std::string, std::string>> pools;
    /// Flag colours, "r,g,b" each, in order.
    std::vector<std::string> flags;
    /// The mapping exactly as `helper.load_settings()` gave it (windows keep it as `settings`).
    py::object mapping;

    std::optional<std::string> get(const std::string& key) const;
    /// The value, or an empty text when absent.
    std::string text(const std::string& key) const;
    /// Switches are the exact text "True".
    bool isTrue(const std::string& key) const;
    std::optional<std::string> poolPath(const std::string& name) const;
};

Settings load_settings();
/// Stores one key; nothing unsets it.
void update_xml(const std::string& key, const std::optional<std::string>& value);
std::string get_settings_xml();
/// The root element of the settings file (of the defaults when there is no file to read).
py::object load_settings_tree();
void prettyprint(const py::object& element);

/// Advanced setting `key` as text, with the caller's default.
std::string advanced_setting(const std::string& key, const std::string& fallback);
/// Hotkey texts by name.
std::map<std::string, std::string> load_hotkeys();
/// Icon key to image path.
std::map<std::string, std::string> load_icons();

void load_tooltips(QWidget* widget, const std::string& section);
void set_style_sheet(QWidget* widget);
void center_window(QWidget* widget);
void show_message_box(QWidget* parent, const std::string& text);
/// True when the user chose the button `process_label`.
bool ask_dialog(const std::string& title, const std::string& message,
                const std::string& process_label, const std::string& color_process);

/// A tree item under `parent` (a PySide tree or item); returns the PySide item.
py::object build_tree_widget_item(const py::object& parent, const std::string& label,
                                  const std::string& path, bool disabled, bool selected,
                                  bool expanded, bool is_dir, const py::object& icon = py::none());

std::string get_explorer_name();
void open_in_explorer(const std::string& path, QWidget* parent);

std::string create_uid();
/// The look container of the current group context, or a false value; makes none.
py::object find_looks_group();
/// A free place for a new node, as Python whole numbers of any size: they only go back to the host.
std::pair<py::int_, py::int_> get_topleft_coordinates();
/// The viewer's `downrez` value in text form, or nothing.
std::optional<std::string> get_resolution();
py::object get_connected_nodes(const py::object& node);
std::pair<int, int> get_image_size(const std::string& path);

py::object load_metadata(const std::string& src);
void create_metaxml(const std::string& path);
void set_flag(const py::object& browser, const std::string& src, const std::string& colour);
/// Flags a snapshot with a colour given as its three decimal texts (red, green, blue), or takes
/// the flag off with nothing.
void set_flag(const py::object& browser, const std::string& src,
              const std::optional<std::vector<std::string>>& colour);
/// The snapshot directories' names as the file system's bytes (see QFile::decodeName).
std::vector<std::string> get_snapshot_dirs();
std::string get_default_snapshot_root_dir();

void show_changelog();
void show_about_window();

/// `settings.Settings()`: the settings window, a Python object.
py::object make_settings_window();
/// `settings.show_panel_new_pool(None, exportwindow=window)`.
void show_panel_new_pool(const py::object& exportwindow);

/// `helper.parse_advanced_settings()` as the mapping it gives.
py::object parse_advanced_settings();
/// The text of `key` in an advanced-settings mapping, or `fallback` when it is absent.
std::string advanced_text(const py::object& mapping, const std::string& key,
                          const std::string& fallback);

/// `helper.build_tree_widget_item` passing only the keywords that are given, so the helper's own
/// defaults hold for the rest. Returns the PySide item, already attached to `parent`.
py::object build_tree_item(const py::object& parent, const std::string& label,
                           const std::string& path, bool disabled, bool selected,
                           std::optional<bool> expanded, std::optional<bool> is_dir,
                           std::optional<std::string> icon);

} // namespace cobaltrig::siblings
