#pragma once
// The module's window slots: one module-level name per window class, unset until the first opening,
// and the lifetime rule of every window object that Python can hold.
//
// A slot that was never opened is absent from the module namespace, not None. Opening a window
// closes whatever stands in its slot (swallowing every failure: the old window may be gone, half
// built, or never have existed), puts a fresh instance in, shows and raises it. The old window is
// not reused, so the new one reads the settings anew.
//
// Any translation unit that converts a window between Python and C++ must include this header, so
// that every one of them uses the checking converter below.

#include <pybind11/pybind11.h>

#include <QCoreApplication>
#include <QObject>
#include <QPointer>

#include <functional>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace cobaltrig::slots {

namespace py = pybind11;

/// Remembers the module whose namespace holds the slots; called once while the module loads.
void set_module(const py::module_& module);

/// The module that holds the slots.
py::module_ module();

/// The window in `slot`, or None when the slot is unset or its window was deleted elsewhere.
py::object get(const char* slot);

/// The opening pattern. `make` builds the new window (a failure there propagates and leaves the
/// slot unset); `after_show` is what the particular entry adds once the window is shown.
py::object open_window(const char* slot, const std::function<py::object()>& make,
                       const std::function<void(py::object&)>& after_show = {});

/// What every window holder shares: a watch on the window's Qt object, so that anything reaching a
/// window from Python can ask whether the object still exists without touching it.
class WindowHolderBase {
public:
    explicit WindowHolderBase(QObject* window) : window_(window) {}

    QObject* object() const { return window_.data(); }

protected:
    QPointer<QObject> window_;
};

/// pybind11 holder for windows made in C++. The Qt object goes through deleteLater, so a window
/// dropped from its slot while one of its own reactions or timers still runs dies only once control
/// is back in the event loop. The holder watches the object: a window that Qt, a studio script or a
/// test deleted first is not deleted again, and none is touched once the application is gone.
template <class Window> class WindowHolder : public WindowHolderBase {
public:
    explicit WindowHolder(Window* window) : WindowHolderBase(window) {}
    WindowHolder(WindowHolder&&) noexcept = default;
    WindowHolder& operator=(WindowHolder&&) noexcept = default;
    WindowHolder(const WindowHolder&) = delete;
    WindowHolder& operator=(const WindowHolder&) = delete;
    ~WindowHolder() {
        if (window_ && QCoreApplication::instance())
            window_->deleteLater();
    }

    Window* get() const { return static_cast<Window*>(window_.data()); }
};

/// Records that the pybind11 class of `type` holds its windows in a WindowHolder; `what` names the
/// window in messages ("import" gives "the import window was closed").
void register_window_class(const std::type_info& type, std::string what);

/// True when `object` is a window of a registered class whose Qt object no longer exists.
bool is_closed(py::handle object);

/// Raises RuntimeError("the <what> window was closed") when `object` is a closed window.
void ensure_alive(py::handle object);

} // namespace cobaltrig::slots

PYBIND11_DECLARE_HOLDER_TYPE(Window, cobaltrig::slots::WindowHolder<Window>)

namespace pybind11::detail {

// Every conversion of a Python object to a C++ QObject subclass checks first that the object is
// still there. The window classes are bound with `self` as a plain reference into memory that Qt
// may already have freed (a "close all floating windows" script calling deleteLater, or
// shiboken.delete on the window's widget); checking here covers every bound method, property and
// cast at once, so no path from Python reaches a deleted window.
template <class T>
class type_caster<T, std::enable_if_t<std::is_base_of_v<QObject, T>>> : public type_caster_base<T> {
public:
    bool load(handle src, bool convert) {
        if (!type_caster_base<T>::load(src, convert))
            return false;
        cobaltrig::slots::ensure_alive(src);
        return true;
    }
};

} // namespace pybind11::detail
