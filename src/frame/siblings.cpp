#include "frame/siblings.h"

#include "frame/qt_bridge.h"

#include <pybind11/stl.h>

#include <QWidget>

namespace cobaltrig::siblings {

namespace {

std::string& package_name() {
    static std::string name = "cobaltRig";
    return name;
}

std::optional<std::string> optionalText(const py::handle& value) {
    if (value.is_none())
        return std::nullopt;
    return py::str(value).cast<std::string>();
}

py::object callHelper(const char* name, py::args args = py::args(),
                      py::kwargs kwargs = py::kwargs()) {
    return helper().attr(name)(*args, **kwargs);
}

} // namespace

namespace {
// The package's own functions that have a native twin, as they were when the package loaded. The
// references are kept for the life of the process: they must not be released after Python ends.
std::map<std::string, PyObject*>& originals() {
    static auto* functions = new std::map<std::string, PyObject*>();
    return *functions;
}
} // namespace

void import_modules(const std::string& package) {
    package_name() = package;
    py::module_ module = helper();
    for (const char* name : {"get_image_size", "load_metadata"}) {
        if (!py::hasattr(module, name))
            continue;
        py::object function = module.attr(name);
        originals()[name] = function.release().ptr();
    }
    settings_module();
}

py::module_ helper() {
    return py::module_::import((package_name() + ".helper").c_str());
}
bool is_original(const char* name) {
    auto it = originals().find(name);
    return it != originals().end() && helper().attr(name).ptr() == it->second;
}

py::module_ settings_module() {
    return py::module_::import((package_name() + ".settings").c_str());
}

std::optional<std::string> Settings::get(const std::string& key) const {
    auto it = values.find(key);
    return it == values.end() ? std::nullopt : it->second;
}

std::string Settings::text(const std::string& key) const {
    return get(key).value_or("");
}

bool Settings::isTrue(const std::string& key) const {
    return get(key) == std::string("True");
}

std::optional<std::string> Settings::poolPath(const std::string& name) const {
    for (const auto& [pool, path] : pools)
        if (pool == name)
            return path;
    return std::nullopt;
}

Settings load_settings() {
    Settings result;
    result.mapping = helper().attr("load_settings")();
    for (auto item : py::reinterpret_borrow<py::dict>(result.mapping)) {
        const std::string key = py::str(item.first).cast<std::string>();
        if (key == "pools") {
            if (!item.second.is_none())
                for (auto pool : py::reinterpret_borrow<py::dict>(item.second))
                    result.pools.emplace_back(py::str(pool.first).cast<std::string>(),
                                              py::str(pool.second).cast<std::string>());
        } else if (key == "flags") {
            if (!item.second.is_none())
                for (auto flag : item.second)
                    result.flags.push_back(py::str(flag).cast<std::string>());
        } else {
            result.values[key] = optionalText(item.second);
        }
    }
    return result;
}

void update_xml(const std::string& key, const std::optional<std::string>& value) {
    helper().attr("update_xml")(key, value ? py::object(py::str(*value)) : py::object(py::none()));
}

std::string get_settings_xml() {
    return py::str(callHelper("get_settings_xml")).cast<std::string>();
}

py::object load_settings_tree() { return callHelper("load_settings_tree"); }

void prettyprint(const py::object& element) { helper().attr("prettyprint")(element); }

std::string advanced_setting(const std::string& key, const std::string& fallback) {
    py::object mapping = callHelper("parse_advanced_settings");
    py::object value = mapping.attr("get")(key, fallback);
    return value.is_none() ? fallback : py::str(value).cast<std::string>();
}

std::map<std::string, std::string> load_hotkeys() {
    std::map<std::string, std::string> result;
    for (auto item : py::reinterpret_borrow<py::dict>(callHelper("load_hotkeys")))
        result[py::str(item.first).cast<std::string>()] = py::str(item.second).cast<std::string>();
    return result;
}

std::map<std::string, std::string> load_icons() {
    std::map<std::string, std::string> result;
    for (auto item : py::reinterpret_borrow<py::dict>(callHelper("load_icons")))
        result[py::str(item.first).cast<std::string>()] = py::str(item.second).cast<std::string>();
    return result;
}

void load_tooltips(QWidget* widget, const std::string& section) {
    helper().attr("load_tooltips")(bridge::wrap(widget), section);
}

void set_style_sheet(QWidget* widget) {
    helper().attr("set_style_sheet")(bridge::wrap(widget));
}

void center_window(QWidget* widget) {
    helper().attr("center_window")(bridge::wrap(widget));
}

void show_message_box(QWidget* parent, const std::string& text) {
    helper().attr("show_message_box")(bridge::wrap(parent), text);
}

bool ask_dialog(const std::string& title, const std::string& message,
                const std::string& process_label, const std::string& color_process) {
    py::object answer =
        helper().attr("ask_dialog")(title, message, py::arg("process_label") = process_label,
                                    py::arg("color_process") = color_process);
    return py::bool_(answer);
}

py::object build_tree_widget_item(const py::object& parent, const std::string& label,
                                  const std::string& path, bool disabled, bool selected,
                                  bool expanded, bool is_dir, const py::object& icon) {
    return helper().attr("build_tree_widget_item")(
        parent, label, path, disabled, selected, py::arg("expanded") = expanded,
        py::arg("is_dir") = is_dir, py::arg("icon") = icon);
}

std::string get_explorer_name() {
    return py::str(callHelper("get_explorer_name")).cast<std::string>();
}

void open_in_explorer(const std::string& path, QWidget* parent) {
    helper().attr("open_in_explorer")(path, py::arg("parent") = bridge::wrap(parent));
}

std::string create_uid() {
    return py::str(callHelper("create_uid")).cast<std::string>();
}

py::object find_looks_group() {
    return callHelper("find_looks_group");
}

std::pair<py::int_, py::int_> get_topleft_coordinates() {
    const auto xy = callHelper("get_topleft_coordinates").cast<std::pair<py::object, py::object>>();
    return {py::int_(xy.first), py::int_(xy.second)};
}

std::optional<std::string> get_resolution() {
    return optionalText(callHelper("get_resolution"));
}

py::object get_connected_nodes(const py::object& node) {
    return helper().attr("get_connected_nodes")(node);
}

std::pair<int, int> get_image_size(const std::string& path) {
    return helper().attr("get_image_size")(path).cast<std::pair<int, int>>();
}

py::object load_metadata(const std::string& src) {
    return helper().attr("load_metadata")(src);
}
void create_metaxml(const std::string& path) {
    helper().attr("create_metaxml")(path);
}

void set_flag(const py::object& browser, const std::string& src, const std::string& colour) {
    helper().attr("set_flag")(browser, src, colour);
}

void set_flag(const py::object& browser, const std::string& src,
              const std::optional<std::vector<std::string>>& colour) {
    py::object value = py::none();
    if (colour) {
        py::list parts;
        for (const std::string& part : *colour)
            parts.append(part);
        value = parts;
    }
    helper().attr("set_flag")(browser, src, value);
}

std::vector<std::string> get_snapshot_dirs() {
    // The file system's own bytes: a name that isn't valid text (os.listdir escapes it) still
    // comes across, and the caller decides what to do with it.
    std::vector<std::string> dirs;
    const py::object fsencode = py::module_::import("os").attr("fsencode");
    for (auto item : callHelper("get_snapshot_dirs")) {
        py::object name = py::reinterpret_borrow<py::object>(item);
        if (!py::isinstance<py::bytes>(name) && !py::isinstance<py::str>(name))
            name = py::str(name);
        dirs.push_back(fsencode(name).cast<std::string>());
    }
    return dirs;
}

std::string get_default_snapshot_root_dir() {
    return py::str(callHelper("get_default_snapshot_root_dir")).cast<std::string>();
}

void show_changelog() {
    callHelper("show_changelog");
}
void show_about_window() {
    callHelper("show_about_window");
}

py::object make_settings_window() {
    return settings_module().attr("Settings")();
}

void show_panel_new_pool(const py::object& exportwindow) {
    settings_module().attr("show_panel_new_pool")(py::none(),
                                                  py::arg("exportwindow") = exportwindow);
}

py::object parse_advanced_settings() {
    return callHelper("parse_advanced_settings");
}

std::string advanced_text(const py::object& mapping, const std::string& key,
                          const std::string& fallback) {
    py::object value = mapping.attr("get")(key, fallback);
    return value.is_none() ? fallback : py::str(value).cast<std::string>();
}

py::object build_tree_item(const py::object& parent, const std::string& label,
                           const std::string& path, bool disabled, bool selected,
                           std::optional<bool> expanded, std::optional<bool> is_dir,
                           std::optional<std::string> icon) {
    py::dict keywords;
    if (expanded)
        keywords["expanded"] = *expanded;
    if (is_dir)
        keywords["is_dir"] = *is_dir;
    if (icon)
        keywords["icon"] = *icon;
    return helper().attr("build_tree_widget_item")(parent, label, path, disabled, selected,
                                                   **keywords);
}

} // namespace cobaltrig::siblings
