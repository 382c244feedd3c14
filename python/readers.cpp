#include "readers.h"

#include <pybind11/eval.h>

#include "module.h"

namespace tarnwick::python {
namespace {

constexpr const char* SOURCE = R"(
def scored_members(symbols):
    return [(symbol.name, symbol.fqn, symbol.is_export, symbol.kind) for symbol in symbols]
)";

PyObject* scored_members = nullptr;  // made once and kept: the process has one such module

}  // namespace

void make_reader() {
  const py::dict names;
  names["__name__"] = MODULE_NAME;
  py::exec(SOURCE, names);
  scored_members = py::object(names["scored_members"]).release().ptr();
}

py::object read_scored_members(py::handle symbols) {
  return asked([&] { return PyObject_CallOneArg(scored_members, symbols.ptr()); });
}

}  // namespace tarnwick::python
