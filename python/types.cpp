#include "types.h"

#include <utility>

#include "module.h"

namespace tarnwick::python {
namespace {

void describe(py::dict& attributes, const char* name, const char* doc) {
  attributes["__module__"] = MODULE_NAME;
  attributes["__qualname__"] = name;
  attributes["__doc__"] = doc;
}

PyObject* keep(py::handle module, const char* name, py::object type) {
  py::setattr(module, name, type);
  return type.release().ptr();  // the module is never unloaded
}

}  // namespace

void add_methods(py::handle type, std::span<PyMethodDef> methods) {
  for (PyMethodDef& method : methods) {
    const py::object descriptor =
        checked(PyDescr_NewMethod(reinterpret_cast<PyTypeObject*>(type.ptr()), &method));
    py::setattr(type, method.ml_name, descriptor);
  }
}

PyObject* add_class(py::handle module, const char* name, const char* doc, py::dict attributes,
                    std::span<PyMethodDef> methods) {
  describe(attributes, name, doc);
  py::object type = py::handle(reinterpret_cast<PyObject*>(&PyType_Type))(name, py::tuple(), attributes);
  add_methods(type, methods);
  return keep(module, name, std::move(type));
}

PyObject* add_record_type(py::handle module, const char* name, const char* doc, const py::list& fields,
                          std::span<PyMethodDef> methods) {
  py::dict attributes;
  describe(attributes, name, doc);
  py::object type = py::module_::import("dataclasses")
                        .attr("make_dataclass")(name, fields, py::arg("namespace") = attributes);
  add_methods(type, methods);
  return keep(module, name, std::move(type));
}

}  // namespace tarnwick::python
