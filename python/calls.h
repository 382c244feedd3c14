// Reading, calling and walking a host's objects.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "errors.h"
#include "names.h"

namespace tarnwick::python {

inline py::object attribute(py::handle object, const Name& name) {
  return asked([&] { return PyObject_GetAttr(object.ptr(), name.object()); });
}

inline bool is_true(py::handle object) {
  return asked([&] { return PyObject_IsTrue(object.ptr()); }) != 0;
}

/// Whether `object` is among the values of `container`, as Python's `in` finds it.
inline bool contains(py::handle container, py::handle object) {
  return asked([&] { return PySequence_Contains(container.ptr(), object.ptr()); }) != 0;
}

inline py::object python_bool(bool value) {
  return py::reinterpret_borrow<py::object>(value ? Py_True : Py_False);
}

/// Calls a method with arguments by position.
template <class... Arguments>
py::object call_method(py::handle object, const Name& name, const Arguments&... arguments) {
  const std::array<PyObject*, sizeof...(Arguments) + 1> all = {object.ptr(), arguments.ptr()...};
  return asked([&] {
    return PyObject_VectorcallMethod(name.object(), all.data(), all.size() | PY_VECTORCALL_ARGUMENTS_OFFSET,
                                     nullptr);
  });
}

/// Calls a method with one argument by position and two by name.
py::object call_method_named(py::handle object, const Name& name, py::handle argument, const Name& first_name,
                             py::handle first, const Name& second_name, py::handle second);

/// The next value of an iterator; null at its end.
py::object next_of(py::handle iterator);

/// Calls `visit(py::object)` for each value, as Python's `for` walks them.
template <class Visit>
void walk(py::handle values, Visit visit) {
  if (PyList_CheckExact(values.ptr()) != 0) {
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(values.ptr()); ++i) {  // the list may change on the way
      visit(py::reinterpret_borrow<py::object>(PyList_GET_ITEM(values.ptr(), i)));
    }
    return;
  }
  const py::object iterator = asked([&] { return PyObject_GetIter(values.ptr()); });
  while (const py::object value = next_of(iterator)) visit(value);
}

/// How many values a walk will give, where that is known at once; else 0.
inline std::size_t size_hint(py::handle values) {
  return PyList_CheckExact(values.ptr()) != 0 ? static_cast<std::size_t>(PyList_GET_SIZE(values.ptr())) : 0;
}

/// The first of exactly `count` values, unpacked as Python unpacks them into names.
py::object first_of(py::handle values, Py_ssize_t count);

/// `values[0]`.
py::object first_item(py::handle values);

/// An integer of at most 64 bits: an int, or what Python takes for one as an index. `what` names it in the
/// TypeError or OverflowError.
std::int64_t to_integer(py::handle object, const char* what);
inline std::optional<std::int64_t> to_optional_integer(py::handle object, const char* what) {
  if (object.is_none()) return std::nullopt;
  return to_integer(object, what);
}

/// As to_integer, but held at the ends of the range: for lines, of which no file has that many.
std::int64_t to_clipped_integer(py::handle object, const char* what);

double to_real(py::handle object);

/// A new list of `convert(item)` for each item.
template <class Items, class Convert>
py::object to_list(const Items& items, Convert convert) {
  py::object list = checked(PyList_New(static_cast<Py_ssize_t>(items.size())));
  Py_ssize_t at = 0;
  for (const auto& item : items) PyList_SET_ITEM(list.ptr(), at++, py::object(convert(item)).release().ptr());
  return list;
}

inline py::object new_dict() {
  return checked(PyDict_New());
}

inline void set_item(py::handle dict, const Name& key, py::handle value) {
  checked(PyDict_SetItem(dict.ptr(), key.object(), value.ptr()));
}

}  // namespace tarnwick::python
