// The extension module itself, one per process.
#pragma once

#include "errors.h"

namespace tarnwick::python {

/// The module's dotted name.
inline constexpr const char* MODULE_NAME = "tarnwick.workers.context_builder";

/// The module, and the attributes that it has of its own or that the host has set.
py::handle module_object();
py::handle module_dict();

}  // namespace tarnwick::python
