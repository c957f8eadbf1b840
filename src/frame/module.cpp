// The extension module `cobaltRig_w`. Importing it defines names and does nothing else: no window
// opens, no settings are read and the script is not touched until the host calls an entry point.

#include "frame/bindings.h"
#include "frame/host.h"
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
    // them. This build is written against Qt 5, which the host carries from version 11 on.
    py::module_::import("nuke");
    py::module_::import("nukescripts");
    const int major = cobaltrig::host::versionMajor();
    if (major < 11)
        throw py::import_error("cobaltRig_w needs a host of version 11 or later (Qt 5); this host is "
                               "version " + std::to_string(major) + ".");
    py::module_::import("PySide2.QtWidgets");

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
