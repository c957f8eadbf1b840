// The extension module `cobaltRig_w`. Importing it defines names and does nothing else: no window
// opens, no settings are read and the script is not touched until the host calls an entry point.

#include "frame/bindings.h"
#include "frame/host.h"
#include "frame/qt_compat.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"

#include <string>

namespace py = pybind11;

namespace {

// The package the module was imported from ("cobaltRig" when installed as a package).
std::string packageOf(const py::module_& m) {
    const std::string name = m.attr("__name__").cast<std::string>();
    const auto dot = name.rfind('.');
    return dot == std::string::npos ? std::string("cobaltRig") : name.substr(0, dot);
}

} // namespace

PYBIND11_MODULE(cobaltRig_w, m) {
    m.doc() = "cobaltRig: looks, preset pools, snapshots and viewer resolution for the host.";

    // The host's scripting modules and the widget toolkit come first: nothing below works without
    // them. A build serves the hosts that carry its Qt: Qt 5.15 from version 14 to 15, Qt 6 from 16
    // on. Saying so here beats the binding's bare import error in the wrong host.
    py::module_::import("nuke");
    py::module_::import("nukescripts");
    const int major = cobaltrig::host::versionMajor();
#if QT_VERSION_MAJOR >= 6
    const bool fits = major >= 16;
    const char* serves = "version 16 or later (Qt 6, PySide6)";
#else
    const bool fits = major >= 14 && major < 16;
    const char* serves = "version 14 or 15 (Qt 5.15, PySide2)";
#endif
    if (!fits)
        throw py::import_error(std::string("this cobaltRig_w was built for a host of ") + serves +
                               "; this host is version " + std::to_string(major) + ".");
    py::module_::import(cobaltrig::kPySideWidgets);

    // Then the sibling modules of the package.
    cobaltrig::siblings::import_modules(packageOf(m));

    // Then the classes, the module-level operations and the constant `TOOL_TUTORIAL`, the address
    // of the user guide, which the snapshots set beside their help menu.
    cobaltrig::slots::set_module(m);
    cobaltrig::bind_frame(m);
    cobaltrig::bind_looks(m);
    cobaltrig::bind_resolution(m);
    cobaltrig::bind_pools(m);
    cobaltrig::bind_snapshots(m);
}
