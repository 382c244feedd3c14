// What the interpreter lends the component besides the host's collaborators.
#pragma once

#include "tarnwick/platform.h"

namespace tarnwick::python {

/// Warnings to the module's `logger`, whatever object that is at the time; file reading and pattern matching
/// without the interpreter lock where that pays. Safe to share between threads.
Platform host_platform();

}  // namespace tarnwick::python
