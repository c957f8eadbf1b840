// src/looks: looks of a node kept inside the script: the look knobs, storing, applying, updating
// and deleting looks, and the slider that steps the selected nodes through them. It uses the
// frame only (host and sibling facades, bridge, window slots, guarded reactions), no other
// subsystem.
//
// The look subsystem's Python names.

#include "frame/bindings.h"
#include "frame/host.h"
#include "frame/qt_bridge.h"
#include "frame/window_slots.h"
#include "looks/applying.h"
#include "looks/look_diff_window.h"
#include "looks/look_knobs.h"
#include "looks/looks_slider.h"
#include "looks/storing.h"
#include "looks/updating.h"

#include <pybind11/stl.h>

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <QLineEdit>
#include <QSlider>

namespace cobaltrig {

namespace py = pybind11;

namespace {

py::object node_object(const std::optional<host::Node>& node) {
    return node ? node->object() : py::object(py::none());
}

void bind_storing(py::module_& m) {
    m.def(
        "get_look_container",
        [](py::object node, py::args) {
            if (node.is_none())
                return looks::get_look_container().object();
            host::GroupContext here(host::parentGroup(host::Node(node)));
            return looks::get_look_container().object();
        },
        py::arg("node") = py::none(),
        "The look container of the current group, or of the group that holds the node; made when "
        "there is none.");
    m.def(
        "get_next_preset_index",
        [](py::object node, py::args) { return looks::get_next_preset_index(host::Node(node)); },
        py::arg("node"), "The index of the next look of the selected node.");
    m.def(
        "set_look",
        [](py::object node, py::args) {
            host::Node n(node);
            looks::set_look(n);
        },
        py::arg("node_to_process"), "Stores the node's present state as a new look.");
    m.def(
        "batch_set_look", [](py::args) { looks::batch_set_look(); },
        "Stores a new look of every selected node.");
    m.def(
        "update_preset", [](py::args) { looks::update_preset(); },
        "Asks for a look of the pressed node and overwrites it with the node's present state.");
    m.def(
        "delete_preset", [](py::args) { looks::delete_preset(); },
        "Asks for a look of the pressed node and removes it.");
}

void bind_applying(py::module_& m) {
    m.def(
        "apply_preset",
        [](py::object node, const std::string& preset_uid, py::object look_preset_index, py::args) {
            host::Node n(node);
            // Commands stored in scripts pass the index quoted; a caller may pass a number.
            return node_object(
                looks::apply_preset(n, preset_uid, py::str(look_preset_index).cast<std::string>()));
        },
        py::arg("node_orig"), py::arg("preset_uid"), py::arg("look_preset_index"),
        "Replaces the node by its stored look; gives the new node or None.");
}

void bind_slider(py::module_& m) {
    using looks::LooksSlider;
    m.def(
        "get_max_look_version", [](py::args) { return looks::get_max_look_version(); },
        "The most look knobs any selected node has, at least 1.");

    py::class_<LooksSlider, slots::WindowHolder<LooksSlider>> cls(m, "LooksSlider");
    cls.def(py::init<>())
        .def(
            "update_widgets", [](LooksSlider& self, py::args) { self.update_widgets(); },
            "Applies the slider's look to the selected nodes.")
        .def("get_current_preset_index",
             [](LooksSlider& self, py::object node, py::args) {
                 return self.get_current_preset_index(host::Node(node));
             })
        .def("set_slider_index", [](LooksSlider& self, py::object index,
                                    py::args) { self.set_slider_index(py::int_(index)); })
        .def_property_readonly("settings", &LooksSlider::settings)
        .def_readonly("auto_release", &LooksSlider::auto_release);
    bridge::def_window_basics<LooksSlider>(cls, "look slider");
    bridge::def_widget(cls, "input_look", &LooksSlider::input_look);
    bridge::def_widget(cls, "slider", &LooksSlider::slider);
    bridge::def_widget(cls, "layout_slider", &LooksSlider::layout_slider);

    m.def(
        "show_looks_slider", [](py::args) { return looks::show_looks_slider(); },
        "Opens the look slider for the selected nodes under the cursor.");
}

void bind_look_diff(py::module_& m) {
    using looks::LookDiffWindow;
    py::class_<LookDiffWindow, slots::WindowHolder<LookDiffWindow>> cls(m, "LookDiffWindow");
    cls.def(py::init([](py::object node) { return new LookDiffWindow(host::Node(node)); }),
            py::arg("node"))
        .def(
            "refresh", [](LookDiffWindow& self, py::args) { self.refresh(); },
            "Reads the node and its looks again and refills the table.")
        .def("apply_look", &LookDiffWindow::apply_look, py::arg("column"),
             "Applies the look of that column to the node; one undo step.")
        .def("set_value_from_look", &LookDiffWindow::set_value_from_look, py::arg("row"),
             py::arg("column"), "Sets that row's knob to the look's value; one undo step.")
        .def_property_readonly("node", &LookDiffWindow::node)
        .def_property_readonly("row_knobs", &LookDiffWindow::row_knobs);
    bridge::def_window_basics<LookDiffWindow>(cls, "look comparison");
    bridge::def_widget(cls, "label_node", &LookDiffWindow::label_node);
    bridge::def_widget(cls, "push_refresh", &LookDiffWindow::push_refresh);
    bridge::def_widget(cls, "table_looks", &LookDiffWindow::table_looks);
    bridge::def_widget(cls, "menu_cell", &LookDiffWindow::menu_cell);
    bridge::def_widget(cls, "action_set_value", &LookDiffWindow::action_set_value);
    bridge::def_widget(cls, "layout_master", &LookDiffWindow::layout_master);
    bridge::def_widget(cls, "layout_top", &LookDiffWindow::layout_top);

    m.def(
        "show_look_diff", [](py::args) { return looks::show_look_diff(); },
        "Opens the table of the knobs that differ between the selected node and its looks.");
}

} // namespace

void bind_looks(py::module_& m) {
    using host::Node;
    auto node_of = [](const py::object& obj) { return Node(obj); };

    m.def(
        "create_looks_widgets",
        [node_of](py::object node, py::args) {
            Node n = node_of(node);
            looks::create_looks_widgets(n);
        },
        py::arg("node"), "Gives the node the look tab and its buttons.");
    m.def(
        "get_preset_knobs",
        [node_of](py::object node, py::args) {
            py::list knobs;
            for (const host::Knob& knob : looks::get_preset_knobs(node_of(node)))
                knobs.append(knob.object());
            return knobs;
        },
        py::arg("node"), "The look knobs of the node.");
    m.def(
        "remove_preset_knobs",
        [node_of](py::object node, py::args) {
            Node n = node_of(node);
            looks::remove_preset_knobs(n);
        },
        py::arg("node"), "Removes the look knobs of the node.");
    m.def(
        "delete_look_widgets",
        [node_of](py::object node, py::args) {
            Node n = node_of(node);
            looks::delete_look_widgets(n);
        },
        py::arg("node"), "Removes look tab, buttons and look knobs from the selected nodes.");
    m.def(
        "delete_selected_nodes_looks", [](py::args) { looks::delete_selected_nodes_looks(); },
        "Removes the looks of every selected node.");

    bind_storing(m);
    bind_applying(m);
    bind_slider(m);
    bind_look_diff(m);
}

} // namespace cobaltrig
