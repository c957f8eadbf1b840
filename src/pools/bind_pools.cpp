// src/pools: preset pools, the shared directory trees of presets: their paths and the walk
// through them, the tree that shows a pool, the choice of pool, and the pool-window base under the
// export and the import window. It uses the frame only (host and sibling facades, bridge, window
// slots, guarded reactions, the preset writer and the settings-file rewrite), no other subsystem.
//
// The preset pools' Python names: the two windows and the four entries that open them.

#include "frame/bindings.h"
#include "frame/host.h"
#include "frame/qt_bridge.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"
#include "pools/export_window.h"
#include "pools/import_window.h"

#include <pybind11/stl.h>

#include <cstdint>

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSlider>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace cobaltrig {

namespace py = pybind11;

namespace {

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

// A widget of the pool-window base, bound on the window class that Python knows (the base is no
// Python class of its own).
template <class Window, class Class, class Member>
void def_base_widget(Class& cls, const char* name, Member* pools::PoolWindow::*member) {
    cls.def_property_readonly(name, [member](Window& self) { return bridge::wrap(self.*member); });
}

// What both pool windows offer Python: the window basics, the pool window's members and the
// widgets they share.
template <class Window, class Class> void def_pool_window(Class& cls, const char* what) {
    bridge::def_window_basics<Window>(cls, what);
    cls.def_property_readonly("settings", [](Window& w) { return w.settings.mapping; })
        .def_property_readonly("icons", [](Window& w) { return w.icons; })
        .def_property_readonly("dirlist",
                               [](Window& w) { return pools::dir_items_to_python(w.dirlist); })
        .def_property_readonly("count_dirItem", [](Window& w) { return w.count_dirItem; });
    def_base_widget<Window>(cls, "label_name", &Window::label_name);
    def_base_widget<Window>(cls, "input_name", &Window::input_name);
    def_base_widget<Window>(cls, "slider_size", &Window::slider_size);
    def_base_widget<Window>(cls, "combo_pool", &Window::combo_pool);
    def_base_widget<Window>(cls, "tree", &Window::tree);
    def_base_widget<Window>(cls, "layout_top", &Window::layout_top);
    def_base_widget<Window>(cls, "layout_master", &Window::layout_master);
    def_base_widget<Window>(cls, "tree_menu", &Window::tree_menu);
}

void bind_export_window(py::module_& m) {
    py::class_<ExportWindow, slots::WindowHolder<ExportWindow>> cls(
        m, "ExportWindow", "The window that writes a node or a toolset as a preset into a pool.");
    cls.def(py::init<py::object>(), py::arg("node"));
    def_pool_window<ExportWindow>(cls, "export");
    cls.def_property_readonly("node", [](ExportWindow& w) { return w.node.get(); })
        .def_property_readonly("mode", [](ExportWindow& w) { return w.mode.toStdString(); })
        .def("get_nodeclass_name",
             [](ExportWindow& w) { return w.get_nodeclass_name().toStdString(); })
        .def("get_mode", [](ExportWindow& w) { return w.get_mode().toStdString(); })
        .def("populate_tree", [](ExportWindow& w, py::args) { w.populate_tree(); })
        .def("build_nodes_dir", [](ExportWindow& w, py::args) { w.build_nodes_dir(); })
        .def("set_input_name", [](ExportWindow& w, py::args) { w.set_input_name(); })
        .def("create_tree_right_click_menu",
             [](ExportWindow& w, py::args) { w.create_tree_right_click_menu(); })
        .def(
            "create_new_category",
            [](ExportWindow& w, const std::string& path, py::args) {
                w.create_new_category(qs(path));
            },
            py::arg("current_path"))
        .def("write_node_as_preset", [](ExportWindow& w, py::args) { w.write_node_as_preset(); });
    bridge::def_widget(cls, "push_save", &ExportWindow::push_save);
    bridge::def_widget(cls, "push_cancel", &ExportWindow::push_cancel);
    bridge::def_widget(cls, "layout_push", &ExportWindow::layout_push);
    bridge::def_widget(cls, "action_new_category", &ExportWindow::action_new_category);
}

void bind_import_window(py::module_& m) {
    py::class_<ImportWindow, slots::WindowHolder<ImportWindow>> cls(
        m, "ImportWindow",
        "The window that browses a pool and inserts, renames and deletes presets.");
    cls.def(py::init<>());
    def_pool_window<ImportWindow>(cls, "import");
    cls.def_property_readonly("advanced_settings",
                              [](ImportWindow& w) { return w.advanced_settings.get(); })
        .def(
            "populate_tree",
            [](ImportWindow& w, py::object expand_list, py::args) {
                QStringList folders;
                if (!expand_list.is_none())
                    for (py::handle folder : expand_list)
                        folders << qs(py::str(folder).cast<std::string>());
                w.populate_tree(folders);
            },
            py::arg("expand_list") = py::none())
        .def("search_item", [](ImportWindow& w, py::args) { w.search_item(); })
        .def("set_data", [](ImportWindow& w, py::args) { w.set_data(); })
        .def("create_tree_right_click_menu",
             [](ImportWindow& w, py::args) { w.create_tree_right_click_menu(); })
        .def(
            "insert_in_dag",
            [](ImportWindow& w, const std::string& path, py::args) { w.insert_in_dag(qs(path)); },
            py::arg("path"))
        .def(
            "rename_item",
            [](ImportWindow& w, const std::string& path, py::args) { w.rename_item(qs(path)); },
            py::arg("path"))
        .def(
            "delete_item",
            [](ImportWindow& w, const std::string& path, py::args) { w.delete_item(qs(path)); },
            py::arg("path"));
    bridge::def_widget(cls, "push_close", &ImportWindow::push_close);
    bridge::def_widget(cls, "action_insert", &ImportWindow::action_insert);
    bridge::def_widget(cls, "action_reveal", &ImportWindow::action_reveal);
    bridge::def_widget(cls, "action_refresh", &ImportWindow::action_refresh);
    bridge::def_widget(cls, "action_rename", &ImportWindow::action_rename);
    bridge::def_widget(cls, "action_delete", &ImportWindow::action_delete);
}

// The body of `helper.build_tree_widget_item`: the item is made in Python, so that the binding owns it
// as it owns any item a script makes, and dressed here as the windows dress theirs.
void dress_tree_widget_item(const py::object& item, const py::object& path, bool disabled,
                            bool selected, bool expanded, const py::object& icon) {
    if (!py::isinstance(item, bridge::pyside_class("QTreeWidgetItem")))
        throw py::type_error("item must be a QTreeWidgetItem");
    if (!py::isinstance(icon, bridge::pyside_class("QIcon")))
        throw py::type_error("icon must be a QIcon");
    auto* icon_ptr = reinterpret_cast<const QIcon*>(bridge::cpp_pointer(icon));
    pools::dress_tree_item(bridge::unwrapTreeItem(item), qs(py::str(path).cast<std::string>()),
                           disabled, selected, expanded, *icon_ptr);
}

py::object show_export_window(const py::object& node) {
    return slots::open_window("exportwindow",
                              [&node] { return slots::module().attr("ExportWindow")(node); });
}

void export_preset(const py::object& node) {
    show_export_window(node);
}

} // namespace

void bind_pools(py::module_& m) {
    bind_export_window(m);
    bind_import_window(m);

    m.def("dress_tree_widget_item", &dress_tree_widget_item, py::arg("item"), py::arg("path"),
          py::arg("disabled"), py::arg("selected"), py::arg("expanded"), py::arg("icon"),
          "Gives a pool tree item its path, icon and state, as the pool windows give theirs.");

    m.def(
        "show_export_window", [](py::object node, py::args) { return show_export_window(node); },
        py::arg("node"),
        "Opens the export window for a node, or for the selection with the text \"toolsets\".");
    m.def(
        "export_preset", [](py::object node, py::args) { export_preset(node); }, py::arg("node"),
        "Opens the export window for the node.");
    m.def(
        "export_nodes",
        [](py::args) {
            if (siblings::advanced_setting("export_items", "True") == "False") {
                host::message("Exporting nodes is disabled.");
                return;
            }
            const std::vector<host::Node> selected = host::selectedNodes();
            if (selected.empty())
                return;
            // Several nodes become a toolset: the window then stands for the selection at the
            // moment of saving.
            if (selected.size() == 1)
                export_preset(selected.front().object());
            else
                export_preset(py::str("toolsets"));
        },
        "Exports the selected node, or the selected nodes as a toolset.");
    m.def(
        "import_preset",
        [](py::args) {
            py::object window =
                slots::open_window("i", [] { return slots::module().attr("ImportWindow")(); });
            // Pressed on a node's look tab, the presets go in beside that node, inside its group.
            if (std::optional<host::Node> node = host::thisNode();
                node && node->knob("preset_import"))
                window.cast<ImportWindow&>().paste_group = host::parentGroup(*node).object();
            return window;
        },
        "Opens the import window.");
}

} // namespace cobaltrig
