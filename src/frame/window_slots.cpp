#include "frame/window_slots.h"

namespace cobaltrig::slots {

namespace {

// Kept by name rather than by object: the module object is owned by sys.modules.
std::string& module_name() {
    static std::string name;
    return name;
}

} // namespace

void set_module(const py::module_& module) {
    module_name() = module.attr("__name__").cast<std::string>();
}

py::module_ module() { return py::module_::import(module_name().c_str()); }

py::object get(const char* slot) {
    py::module_ m = module();
    return py::hasattr(m, slot) ? py::object(m.attr(slot)) : py::object(py::none());
}

py::object open_window(const char* slot, const std::function<py::object()>& make,
                       const std::function<void(py::object&)>& after_show) {
    py::module_ m = module();
    try {
        m.attr(slot).attr("close")();
    } catch (...) {
        // Unset, already deleted or failing to close: the new window comes all the same.
    }
    try {
        py::delattr(m, slot);
    } catch (...) {
    }
    py::object window = make();
    m.attr(slot) = window;
    window.attr("show")();
    window.attr("raise_")();
    if (after_show)
        after_show(window);
    return window;
}

} // namespace cobaltrig::slots
