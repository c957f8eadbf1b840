#include "frame/window_slots.h"

#include <stdexcept>
#include <typeindex>
#include <unordered_map>

namespace cobaltrig::slots {

namespace {

// Kept by name rather than by object: the module object is owned by sys.modules.
std::string& module_name() {
    static std::string name;
    return name;
}

// Window classes whose pybind11 instances hold a WindowHolder, with the name messages give them.
// Never destroyed: instances may be released during static destruction.
std::unordered_map<std::type_index, std::string>& window_classes() {
    static auto* classes = new std::unordered_map<std::type_index, std::string>();
    return *classes;
}

// The holder of `object` when it is an instance of a registered window class, with that class's
// name; {nullptr, nullptr} for anything else (None, other classes, a half-built instance).
std::pair<const WindowHolderBase*, const std::string*> window_holder(py::handle object) {
    // Only instances of pybind11 classes have value-and-holder records to look at.
    if (!object || py::detail::all_type_info(Py_TYPE(object.ptr())).empty())
        return {nullptr, nullptr};
    auto* inst = reinterpret_cast<py::detail::instance*>(object.ptr());
    for (const py::detail::value_and_holder& v_h : py::detail::values_and_holders(inst)) {
        auto found = window_classes().find(std::type_index(*v_h.type->cpptype));
        if (found == window_classes().end() || !v_h.holder_constructed())
            continue;
        return {&v_h.holder<WindowHolderBase>(), &found->second};
    }
    return {nullptr, nullptr};
}

} // namespace

void register_window_class(const std::type_info& type, std::string what) {
    window_classes()[std::type_index(type)] = std::move(what);
}

bool is_closed(py::handle object) {
    const auto [holder, what] = window_holder(object);
    return holder && !holder->object();
}

void ensure_alive(py::handle object) {
    const auto [holder, what] = window_holder(object);
    if (holder && !holder->object())
        throw std::runtime_error("the " + *what + " window was closed");
}

void set_module(const py::module_& module) {
    module_name() = module.attr("__name__").cast<std::string>();
}

py::module_ module() {
    return py::module_::import(module_name().c_str());
}

py::object get(const char* slot) {
    py::module_ m = module();
    if (!py::hasattr(m, slot))
        return py::none();
    py::object window = m.attr(slot);
    return is_closed(window) ? py::object(py::none()) : window;
}

py::object open_window(const char* slot, const std::function<py::object()>& make,
                       const std::function<void(py::object&)>& after_show) {
    py::module_ m = module();
    try {
        // A window deleted elsewhere is no window: there is nothing left to close.
        py::object old = get(slot);
        if (!old.is_none())
            old.attr("close")();
    } catch (...) {
        // Failing to close, or no window at all: the new window comes all the same.
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
