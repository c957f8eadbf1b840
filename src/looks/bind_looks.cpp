// The look subsystem's Python names.

#include "frame/bindings.h"
#include "frame/host.h"
#include "looks/look_knobs.h"

#include <pybind11/stl.h>

namespace cobaltrig {

namespace py = pybind11;

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
}

} // namespace cobaltrig
