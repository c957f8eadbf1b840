#pragma once
// The module's window slots: one module-level name per window class, unset until the first opening.
//
// A slot that was never opened is absent from the module namespace, not None. Opening a window
// closes whatever stands in its slot (swallowing every failure: the old window may be gone, half
// built, or never have existed), puts a fresh instance in, shows and raises it. The old window is not
// reused, so the new one reads the settings anew.

#include <pybind11/pybind11.h>

#include <QCoreApplication>
#include <QObject>
#include <QPointer>

#include <functional>
#include <string>

namespace cobaltrig::slots {

namespace py = pybind11;

/// Remembers the module whose namespace holds the slots; called once while the module loads.
void set_module(const py::module_& module);

/// The module that holds the slots.
py::module_ module();

/// The window in `slot`, or None when the slot is unset.
py::object get(const char* slot);

/// The opening pattern. `make` builds the new window (a failure there propagates and leaves the
/// slot unset); `after_show` is what the particular entry adds once the window is shown.
py::object open_window(const char* slot, const std::function<py::object()>& make,
                       const std::function<void(py::object&)>& after_show = {});

/// pybind11 holder for windows made in C++. The Qt object goes through deleteLater, so a window
/// dropped from its slot while one of its own reactions or timers still runs dies only once control
/// is back in the event loop. The holder watches the object: a window that Qt or a test deleted
/// first is not deleted again, and none is touched once the application is gone.
template <class Window>
class WindowHolder {
public:
    explicit WindowHolder(Window* window) : window_(window) {}
    WindowHolder(WindowHolder&&) noexcept = default;
    WindowHolder& operator=(WindowHolder&&) noexcept = default;
    WindowHolder(const WindowHolder&) = delete;
    WindowHolder& operator=(const WindowHolder&) = delete;
    ~WindowHolder() {
        if (window_ && QCoreApplication::instance())
            window_->deleteLater();
    }

    Window* get() const { return window_.data(); }

private:
    QPointer<Window> window_;
};

} // namespace cobaltrig::slots

PYBIND11_DECLARE_HOLDER_TYPE(Window, cobaltrig::slots::WindowHolder<Window>)
