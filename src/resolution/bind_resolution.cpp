// src/resolution: the slider for the viewer's reduced-resolution mode. It uses the frame only
// (host and sibling facades, bridge, window slots, guarded reactions), no other subsystem.
//
// The resolution subsystem's Python names.

#include "frame/bindings.h"
#include "frame/qt_bridge.h"
#include "frame/window_slots.h"
#include "resolution/rez_slider.h"

#include <pybind11/stl.h>

#include <QHBoxLayout>
#include <QLineEdit>
#include <QSlider>

namespace cobaltrig {

namespace py = pybind11;

void bind_resolution(py::module_& m) {
    using resolution::RezSlider;

    m.def(
        "set_resolution",
        [](py::object rez, py::args) {
            resolution::set_resolution(py::str(rez).cast<std::string>());
        },
        py::arg("rez"), "Sets the active viewer's downrez knob to the step, given as text.");

    py::class_<RezSlider, slots::WindowHolder<RezSlider>> cls(m, "RezSlider");
    cls.def(py::init<>())
        .def(
            "update_widgets",
            [](RezSlider& self, const std::string& sender, py::args) {
                self.update_widgets(sender);
            },
            py::arg("sender"), "Brings field, slider and viewer in line after `sender` changed.")
        .def_readonly("resolutions", &RezSlider::resolutions);
    bridge::def_window_basics<RezSlider>(cls, "resolution slider");
    bridge::def_widget(cls, "input_rez", &RezSlider::input_rez);
    bridge::def_widget(cls, "slider", &RezSlider::slider);
    bridge::def_widget(cls, "layout_slider", &RezSlider::layout_slider);

    m.def(
        "showRezSlider", [](py::args) { return resolution::showRezSlider(); },
        "Opens the resolution slider under the cursor at the active viewer's step.");
}

} // namespace cobaltrig
