#pragma once
// The one way from Qt's event loop into the module's reactions.
//
// A C++ exception must never cross Qt's event loop, and a Python failure inside a reaction must not
// vanish either: it goes to the host's console (Python's sys.stderr) with its traceback, as the host
// shows a failed script command, and the host keeps running. Every signal reaction, event handler
// and timer tick of a window runs through `guarded`.

#include <pybind11/pybind11.h>

#include <QObject>

#include <type_traits>
#include <utility>

namespace cobaltrig {

namespace py = pybind11;

/// Writes the failure being handled (call from inside a catch block) to sys.stderr.
void report_current_failure(const char* context) noexcept;

/// Runs `reaction` holding the GIL; any failure is reported and swallowed.
template <class F>
void guarded(const char* context, F&& reaction) noexcept {
    try {
        py::gil_scoped_acquire gil;
        try {
            std::forward<F>(reaction)();
        } catch (...) {
            report_current_failure(context);
        }
    } catch (...) {
        // Only the GIL acquisition itself can land here; nothing sensible is left to report to.
    }
}

/// Connects a signal to a reaction that runs guarded. The reaction may take the signal's arguments
/// or none of them: reactions ignore what a signal passes unless they need it.
template <class Sender, class SignalOwner, class... SignalArgs, class F>
QMetaObject::Connection connect_guarded(Sender* sender, void (SignalOwner::*signal)(SignalArgs...),
                                        QObject* context, const char* name, F reaction) {
    return QObject::connect(sender, signal, context,
                            [name, reaction = std::move(reaction)](SignalArgs... args) mutable {
                                guarded(name, [&] {
                                    if constexpr (std::is_invocable_v<F&, SignalArgs...>)
                                        reaction(args...);
                                    else
                                        reaction();
                                });
                            });
}

} // namespace cobaltrig
