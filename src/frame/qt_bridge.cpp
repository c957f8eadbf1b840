#include "frame/qt_bridge.h"

#include <QMetaObject>
#include <QObject>
#include <QWidget>

#include <cstdint>

namespace cobaltrig::bridge {

namespace {

// The PySide2 class for a C++ class name: Qt's own classes live in one of these modules; our own
// subclasses are not known to PySide2, so the caller walks up to the nearest Qt base.
py::object pysideClass(const char* class_name) {
    for (const char* module : {"PySide2.QtWidgets", "PySide2.QtGui", "PySide2.QtCore"}) {
        py::module_ qt = py::module_::import(module);
        if (py::hasattr(qt, class_name))
            return qt.attr(class_name);
    }
    return py::none();
}

} // namespace

py::object wrap(QObject* object) {
    if (!object)
        return py::none();
    py::module_ shiboken = py::module_::import("shiboken2");
    for (const QMetaObject* meta = object->metaObject(); meta; meta = meta->superClass()) {
        py::object cls = pysideClass(meta->className());
        if (!cls.is_none())
            return shiboken.attr("wrapInstance")(reinterpret_cast<std::uintptr_t>(object), cls);
    }
    return py::none();
}

QObject* unwrap(const py::handle& pyside_object) {
    if (pyside_object.is_none())
        return nullptr;
    py::module_ shiboken = py::module_::import("shiboken2");
    py::tuple pointers = shiboken.attr("getCppPointer")(pyside_object);
    return reinterpret_cast<QObject*>(pointers[0].cast<std::uintptr_t>());
}

QWidget* unwrapWidget(const py::handle& pyside_object) {
    QObject* object = unwrap(pyside_object);
    return object && object->isWidgetType() ? static_cast<QWidget*>(object) : nullptr;
}

QTreeWidgetItem* unwrapTreeItem(const py::handle& pyside_item) {
    if (pyside_item.is_none())
        return nullptr;
    py::tuple pointers = py::module_::import("shiboken2").attr("getCppPointer")(pyside_item);
    return reinterpret_cast<QTreeWidgetItem*>(pointers[0].cast<std::uintptr_t>());
}

} // namespace cobaltrig::bridge
