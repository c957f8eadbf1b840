// src/frame: the ground the four subsystems stand on. The module's entry and load order, the
// window slots, the host facade and the sibling facade (through which every subsystem reaches the
// host's and the sibling modules' Python, looked up at call time), the Qt<->Python bridge, the
// guarded way from Qt's event loop into a reaction, what differs between Qt 5 and Qt 6, and the
// file writers every subsystem uses: the atomic file replacement, the preset written through the
// host, the settings-file rewrite. It includes nothing from looks, resolution, pools or snapshots.
//
// The frame's Python names: the settings window entry and the test-only submodule.

#include "frame/atomic_write.h"
#include "frame/bindings.h"
#include "frame/bridge_probe.h"
#include "frame/guarded.h"
#include "frame/preset_file.h"
#include "frame/qt_bridge.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace cobaltrig {

namespace py = pybind11;

namespace {

void bind_testing(py::module_& m) {
    py::module_ testing = m.def_submodule("_testing", "Hooks for the module's own tests.");

    py::class_<BridgeProbe, slots::WindowHolder<BridgeProbe>> probe(testing, "BridgeProbe");
    probe.def(py::init<>()).def("set_reaction", &BridgeProbe::set_reaction);
    bridge::def_window_basics<BridgeProbe>(probe, "probe");
    bridge::def_widget(probe, "input_text", &BridgeProbe::input_text);
    bridge::def_widget(probe, "push_apply", &BridgeProbe::push_apply);
    bridge::def_widget(probe, "label_result", &BridgeProbe::label_result);

    testing.def(
        "unwrap_roundtrip", [](py::object widget) { return bridge::wrap(bridge::unwrap(widget)); },
        "The PySide object that the C++ side finds behind `widget`.");
    testing.def(
        "run_guarded",
        [](py::object reaction) {
            bool ran = false;
            guarded("_testing.run_guarded", [&] {
                ran = true;
                reaction();
            });
            return ran;
        },
        "Runs `reaction` the way a signal reaction runs; failures go to stderr.");
    testing.def(
        "write_file_atomically",
        [](const std::string& path, const py::bytes& data) {
            const std::string bytes = data;
            files::writeFileAtomically(QString::fromStdString(path),
                                       QByteArray(bytes.data(), static_cast<int>(bytes.size())));
        },
        py::arg("path"), py::arg("data"), "The module's file writer, for tests that kill it.");
    testing.def(
        "write_preset_through_host",
        [](const std::string& path) { files::writePresetThroughHost(QString::fromStdString(path)); },
        py::arg("path"), "The preset writer, for tests that kill it.");
    testing.def("throw_in_guard", [] {
        guarded("_testing.throw_in_guard",
                [] { throw std::runtime_error("C++ failure in a slot"); });
    });
}

} // namespace

void bind_frame(py::module_& m) {
    m.def(
        "show_settings",
        [](py::args) {
            return slots::open_window("settingswindow",
                                      [] { return siblings::make_settings_window(); });
        },
        "Opens the settings window, replacing one that is open.");
    bind_testing(m);
}

} // namespace cobaltrig
