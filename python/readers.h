// Members of many symbols, read at once.
#pragma once

#include "errors.h"

namespace tarnwick::python {

// The reader is a function of Python: the interpreter learns where a class keeps its attributes and then
// reads one in a few instructions, where PyObject_GetAttr looks through the class and the instance each time.
// It reads in the order of the list, and what an attribute raises comes through.

/// Makes the reader; called once, when the module is imported.
void make_reader();

/// A list of tuples: the name, fqn, is_export and kind of each symbol of a list, read in this order.
py::object read_scored_members(py::handle symbols);

}  // namespace tarnwick::python
