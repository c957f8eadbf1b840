#include "frame/qt_bridge.h"

#include "frame/py_owned.h"
#include "frame/qt_compat.h"

#include <QMetaObject>
#include <QObject>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <unordered_map>

namespace cobaltrig::bridge {

py::module_ shiboken() {
    return py::module_::import(kShiboken);
}

// Qt's own classes live in one of these modules; our own subclasses are not known to the binding,
// so `wrap` walks up to the nearest Qt base.
py::object pyside_class(const char* class_name) {
    for (const char* module : {kPySideWidgets, kPySideGui, kPySideCore}) {
        py::module_ qt = py::module_::import(module);
        if (py::hasattr(qt, class_name))
            return qt.attr(class_name);
    }
    return py::none();
}

std::uintptr_t cpp_pointer(const py::handle& pyside_object) {
    py::tuple pointers = shiboken().attr("getCppPointer")(pyside_object);
    return pointers[0].cast<std::uintptr_t>();
}

namespace {

// One PySide wrapper per Qt object, alive as long as the object. PySide invalidates the wrappers
// of a wrapper's children when that wrapper dies, so `window.tree.viewport()` would give a dead
// object if the tree's wrapper were a temporary; a window written in PySide keeps its attributes'
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
        shiboken().attr("invalidate")(wrapper->get());
    } catch (py::error_already_set&) {
    }
}

} // namespace

py::object wrap(QObject* object) {
    if (!object)
        return py::none();
    if (auto it = wrappers().find(object); it != wrappers().end())
        return it->second->get();
    for (const QMetaObject* meta = object->metaObject(); meta; meta = meta->superClass()) {
        py::object cls = pyside_class(meta->className());
        if (cls.is_none())
            continue;
        py::object wrapper =
            shiboken().attr("wrapInstance")(reinterpret_cast<std::uintptr_t>(object), cls);
        wrappers().emplace(object, std::make_unique<PyOwned>(wrapper));
        QObject::connect(object, &QObject::destroyed, [object] { forget(object); });
        return wrapper;
    }
    return py::none();
}

QObject* unwrap(const py::handle& pyside_object) {
    if (pyside_object.is_none())
        return nullptr;
    return reinterpret_cast<QObject*>(cpp_pointer(pyside_object));
}

QWidget* unwrapWidget(const py::handle& pyside_object) {
    QObject* object = unwrap(pyside_object);
    return object && object->isWidgetType() ? static_cast<QWidget*>(object) : nullptr;
}

QTreeWidgetItem* unwrapTreeItem(const py::handle& pyside_item) {
    if (pyside_item.is_none())
        return nullptr;
    return reinterpret_cast<QTreeWidgetItem*>(cpp_pointer(pyside_item));
}

} // namespace cobaltrig::bridge
