#include "frame/qt_bridge.h"

#include "frame/py_owned.h"

#include <QMetaObject>
#include <QObject>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <unordered_map>

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

// One PySide2 wrapper per Qt object, alive as long as the object. PySide2 invalidates the wrappers
// of a wrapper's children when that wrapper dies, so `window.tree.viewport()` would give a dead
// object if the tree's wrapper were a temporary; a window written in PySide2 keeps its attributes'
// wrappers for its whole life, and so does this cache. Never destroyed: Qt objects may outlive
// static destruction.
std::unordered_map<QObject*, std::unique_ptr<PyOwned>>& wrappers() {
    static auto* cache = new std::unordered_map<QObject*, std::unique_ptr<PyOwned>>();
    return *cache;
}

void forget(QObject* object) {
    auto it = wrappers().find(object);
    if (it == wrappers().end())
        return;
    std::unique_ptr<PyOwned> wrapper = std::move(it->second);
    wrappers().erase(it);
    if (!Py_IsInitialized())
        return;
    // Python code that still holds the wrapper gets a clean "already deleted" error rather than a
    // dangling pointer.
    py::gil_scoped_acquire gil;
    try {
        py::module_::import("shiboken2").attr("invalidate")(wrapper->get());
    } catch (py::error_already_set&) {
    }
}

} // namespace

py::object wrap(QObject* object) {
    if (!object)
        return py::none();
    if (auto it = wrappers().find(object); it != wrappers().end())
        return it->second->get();
    py::module_ shiboken = py::module_::import("shiboken2");
    for (const QMetaObject* meta = object->metaObject(); meta; meta = meta->superClass()) {
        py::object cls = pysideClass(meta->className());
        if (cls.is_none())
            continue;
        py::object wrapper =
            shiboken.attr("wrapInstance")(reinterpret_cast<std::uintptr_t>(object), cls);
        wrappers().emplace(object, std::make_unique<PyOwned>(wrapper));
        QObject::connect(object, &QObject::destroyed, [object] { forget(object); });
        return wrapper;
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
