#include "calls.h"

#include <limits>

namespace tarnwick::python {
namespace {

/// The tuple of two argument names, kept: the call sites pass the same two each time.
py::object name_pair(const Name& first, const Name& second) {
  return checked(PyTuple_Pack(2, first.object(), second.object()));
}

[[noreturn]] void throw_count(Py_ssize_t expected, Py_ssize_t got) {
  if (got > expected) throw_new(PyExc_ValueError, "too many values to unpack (expected %zd)", expected);
  throw_new(PyExc_ValueError, "not enough values to unpack (expected %zd, got %zd)", expected, got);
}

/// `overflow` becomes -1 or 1 for an integer below or above the range; the value is then of no use.
std::int64_t convert(py::handle object, const char* what, int& overflow) {
  if (PyLong_Check(object.ptr()) == 0) {
    if (PyIndex_Check(object.ptr()) != 0)
      return convert(asked([&] { return PyNumber_Index(object.ptr()); }), what, overflow);
    throw_new(PyExc_TypeError, "%s must be an integer, not %.200s", what, Py_TYPE(object.ptr())->tp_name);
  }
  const long long value = PyLong_AsLongLongAndOverflow(object.ptr(), &overflow);
  if (value == -1 && PyErr_Occurred() != nullptr) throw_raised();
  return value;
}

}  // namespace

py::object call_method_named(py::handle object, const Name& name, py::handle argument, const Name& first_name,
                             py::handle first, const Name& second_name, py::handle second) {
  const py::object keywords = name_pair(first_name, second_name);
  const std::array<PyObject*, 4> all = {object.ptr(), argument.ptr(), first.ptr(), second.ptr()};
  return asked([&] {
    return PyObject_VectorcallMethod(name.object(), all.data(), 2 | PY_VECTORCALL_ARGUMENTS_OFFSET,
                                     keywords.ptr());
  });
}

py::object next_of(py::handle iterator) {
  PyObject* value = until_exit([&] { return PyIter_Next(iterator.ptr()); });
  if (value == nullptr && PyErr_Occurred() != nullptr) throw_raised();
  return py::reinterpret_steal<py::object>(value);
}

py::object first_of(py::handle values, Py_ssize_t count) {
  if (PyTuple_CheckExact(values.ptr()) != 0) {
    if (PyTuple_GET_SIZE(values.ptr()) != count) throw_count(count, PyTuple_GET_SIZE(values.ptr()));
    return py::reinterpret_borrow<py::object>(PyTuple_GET_ITEM(values.ptr(), 0));
  }
  const auto iterator = py::reinterpret_steal<py::object>(PyObject_GetIter(values.ptr()));
  if (!iterator) {
    if (PyErr_ExceptionMatches(PyExc_TypeError) == 0 || Py_TYPE(values.ptr())->tp_iter != nullptr)
      throw_raised();
    throw_new(PyExc_TypeError, "cannot unpack non-iterable %.200s object", Py_TYPE(values.ptr())->tp_name);
  }
  py::object first;
  Py_ssize_t got = 0;
  while (py::object item = next_of(iterator)) {
    if (got == 0) first = std::move(item);
    if (++got > count) throw_count(count, got);  // as Python, without walking to the end
  }
  if (got != count) throw_count(count, got);
  return first;
}

py::object first_item(py::handle values) {
  if (PyTuple_CheckExact(values.ptr()) != 0 && PyTuple_GET_SIZE(values.ptr()) > 0) {
    return py::reinterpret_borrow<py::object>(PyTuple_GET_ITEM(values.ptr(), 0));
  }
  const py::object zero = checked(PyLong_FromLong(0));
  return asked([&] { return PyObject_GetItem(values.ptr(), zero.ptr()); });
}

std::int64_t to_integer(py::handle object, const char* what) {
  int overflow = 0;
  const std::int64_t value = convert(object, what, overflow);
  if (overflow != 0) throw_new(PyExc_OverflowError, "%s does not fit in 64 bits", what);
  return value;
}

std::int64_t to_clipped_integer(py::handle object, const char* what) {
  using Limits = std::numeric_limits<std::int64_t>;
  int overflow = 0;
  const std::int64_t value = convert(object, what, overflow);
  if (overflow == 0) return value;
  return overflow > 0 ? Limits::max() : Limits::min();
}

double to_real(py::handle object) {
  const double value = PyFloat_AsDouble(object.ptr());
  if (value == -1.0 && PyErr_Occurred() != nullptr) throw_raised();
  return value;
}

}  // namespace tarnwick::python
