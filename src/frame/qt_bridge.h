#pragma once
// Hands Qt objects made in C++ to Python as real PySide objects, and back.
//
// A window's child widgets are reached from Python (the host, the sibling modules, tests) exactly
// as if the window had been written with PySide: `window.combo_pool.setCurrentIndex(3)` works. The
// wrappers never own the C++ object; Qt parentage and the window slots do. The binding (PySide or
// PySide6) is the one the build names in frame/qt_compat.h; this bridge is the only code that
// imports it.

#include "frame/window_slots.h"

#include <pybind11/pybind11.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <typeinfo>

class QObject;
class QWidget;
class QTreeWidgetItem;

namespace cobaltrig::bridge {

namespace py = pybind11;

/// The binding's shiboken module (shiboken2 or shiboken6).
py::module_ shiboken();

/// The binding's class of that name from QtWidgets, QtGui or QtCore; None when none has it.
py::object pyside_class(const char* class_name);

/// The address of the C++ object behind any binding object (a QIcon, a tree item...).
std::uintptr_t cpp_pointer(const py::handle& pyside_object);

/// The PySide object for `object`, typed as the most derived Qt class that PySide knows;
/// None for a null pointer.
py::object wrap(QObject* object);

/// The C++ object behind a PySide object; nullptr for None.
QObject* unwrap(const py::handle& pyside_object);

/// The widget behind a PySide widget, or nullptr when it is None or not a widget.
QWidget* unwrapWidget(const py::handle& pyside_object);

/// The C++ item behind a PySide QTreeWidgetItem (not a QObject, so it has its own way back).
QTreeWidgetItem* unwrapTreeItem(const py::handle& pyside_item);

/// Binds a read-only attribute `name` that gives the PySide object of a widget member.
template <class Window, class Class, class Member>
void def_widget(Class& cls, const char* name, Member* Window::*member) {
    cls.def_property_readonly(name, [member](Window& self) { return wrap(self.*member); });
}

/// Binds what every window offers Python: show, raise_, close, isVisible, move and `widget`, the
/// window's own PySide object (for Qt parents, qtbot and the sibling modules). `what` names the
/// window in the error a call on it raises once its Qt object is gone ("the import window was
/// closed"); every member bound on the class, here or elsewhere, gets that check.
template <class Window, class Class> void def_window_basics(Class& cls, std::string what) {
    static_assert(std::is_same_v<typename Class::holder_type, slots::WindowHolder<Window>>,
                  "windows are held by slots::WindowHolder, which watches their Qt object");
    slots::register_window_class(typeid(Window), std::move(what));
    cls.def("show", [](Window& self) { self.show(); })
        .def("raise_", [](Window& self) { self.raise(); })
        .def("close", [](Window& self) { return self.close(); })
        .def("isVisible", [](Window& self) { return self.isVisible(); })
        .def("move", [](Window& self, int x, int y) { self.move(x, y); })
        .def_property_readonly("widget", [](Window& self) { return wrap(&self); });
}

} // namespace cobaltrig::bridge
