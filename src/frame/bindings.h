#pragma once
// One registration function per subsystem; module.cpp calls them in the load order.

#include <pybind11/pybind11.h>

namespace cobaltrig {

void bind_frame(pybind11::module_& m);
void bind_looks(pybind11::module_& m);
void bind_resolution(pybind11::module_& m);
void bind_pools(pybind11::module_& m);
void bind_snapshots(pybind11::module_& m);

} // namespace cobaltrig
