// Python's errors on their way through the component.
#pragma once

#include <pybind11/pybind11.h>

#include <exception>

namespace tarnwick::python {

namespace py = pybind11;

/// A raised Python exception, the object itself with its traceback.
class Raised {
 public:
  explicit Raised(py::object exception) : exception_(std::move(exception)) {}

  const py::object& object() const noexcept { return exception_; }
  /// Raises it again, as the error that Python sees next.
  void restore() const noexcept;

 private:
  py::object exception_;
};

/// What `except Exception` catches in Python; the component may survive it.
class HostError : public std::exception, public Raised {
 public:
  using Raised::Raised;
  const char* what() const noexcept override { return "an error of the host"; }
};

/// What `except Exception` lets pass (an interrupt, the end of the process): no handler of errors may see it.
class HostInterrupt : public Raised {
 public:
  using Raised::Raised;
};

/// Throws the error that Python has just raised.
[[noreturn]] void throw_raised();

/// Throws a new Python exception; `format` and what follows are those of PyErr_Format.
template <class... Arguments>
[[noreturn]] void throw_new(PyObject* type, const char* format, Arguments... arguments) {
  PyErr_Format(type, format, arguments...);
  throw_raised();
}

/// `object` as an owner, or a throw when it is null because Python has raised.
inline py::object checked(PyObject* object) {
  if (object == nullptr) throw_raised();
  return py::reinterpret_steal<py::object>(object);
}

/// Throws when a call of the interpreter answered a negative status.
inline int checked(int status) {
  if (status < 0) throw_raised();
  return status;
}

/// Stops this thread for good, until the process has ended.
[[noreturn]] void stay_until_exit() noexcept;

/// Runs `call`, which may run Python code.
///
/// An interpreter that is ending unwinds the stack of any other thread that comes back for the lock.
/// Unwinding on through our frames would drop references without the lock, so the thread stays where it is
/// instead.
template <class Call>
auto until_exit(Call call) {
  try {
    return call();
  } catch (
      ...) {  // the interpreter throws nothing else; that unwinding has no object, so no type is asked for
    stay_until_exit();
  }
}

/// As until_exit, with the result checked.
template <class Call>
auto asked(Call call) {
  return checked(until_exit(call));
}

/// Turns the C++ exception in flight into Python's error.
void translate_exception() noexcept;

/// Runs `body`, whose result is a py::object, where Python calls in: nothing but Python's errors leaves.
template <class Body>
PyObject* at_border(Body&& body) noexcept {
  try {
    return body().release().ptr();
  } catch (...) {
    translate_exception();
    return nullptr;
  }
}

}  // namespace tarnwick::python
