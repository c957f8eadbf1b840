#include "frame/guarded.h"

#include <exception>
#include <string>

namespace cobaltrig {

namespace {

void write_stderr(const std::string& text) {
    py::module_::import("sys").attr("stderr").attr("write")(text);
}

} // namespace

void report_current_failure(const char* context) noexcept {
    try {
        try {
            throw;
        } catch (py::error_already_set& e) {
            write_stderr(std::string("cobaltRig: ") + context + " failed:\n");
            // A failure raised by compiled code called from here has no traceback: it is passed
            // as None, or the whole report would fail and leave the line above without a reason.
            auto given = [](const py::object& part) { return part ? part : py::object(py::none()); };
            try {
                py::module_::import("traceback")
                    .attr("print_exception")(
                        given(e.type()), given(e.value()), given(e.trace()),
                        py::arg("file") = py::module_::import("sys").attr("stderr"));
            } catch (...) {
                write_stderr(std::string(e.what()) + "\n");
            }
        } catch (const std::exception& e) {
            write_stderr(std::string("cobaltRig: ") + context + " failed: " + e.what() + "\n");
        } catch (...) {
            write_stderr(std::string("cobaltRig: ") + context + " failed with an unknown error\n");
        }
    } catch (...) {
        // The console itself failed; there is nowhere left to report to.
    }
}

} // namespace cobaltrig
