// Classes of the host's language, made when the module is imported.
#pragma once

#include <span>

#include "errors.h"

namespace tarnwick::python {

/// Adds methods written in C++ to a class of Python, where they bind as functions do.
void add_methods(py::handle type, std::span<PyMethodDef> methods);

/// Makes a class as a class statement does, with `attributes` and `methods`, and adds it to `module`.
/// The reference returned is borrowed from the module's own, which is never dropped.
PyObject* add_class(py::handle module, const char* name, const char* doc, py::dict attributes,
                    std::span<PyMethodDef> methods);

/// As add_class, a data class with `fields`.
PyObject* add_record_type(py::handle module, const char* name, const char* doc, const py::list& fields,
                          std::span<PyMethodDef> methods);

}  // namespace tarnwick::python
