#include "errors.h"

#include <unistd.h>

#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "strings.h"
#include "tarnwick/workers/context_builder.h"

namespace tarnwick::python {
namespace {

void set_error(PyObject* type, std::string_view message) noexcept {
  PyObject* text = PyUnicode_DecodeUTF8(message.data(), static_cast<Py_ssize_t>(message.size()), SURROGATES);
  if (text == nullptr) return;  // Python has set an error of its own
  PyErr_SetObject(type, text);
  Py_DECREF(text);
}

}  // namespace

void Raised::restore() const noexcept {
  PyObject* exception = exception_.ptr();
  Py_INCREF(exception);
  auto* type = reinterpret_cast<PyObject*>(Py_TYPE(exception));
  Py_INCREF(type);
  PyErr_Restore(type, exception, PyException_GetTraceback(exception));
}

void throw_raised() {
  PyObject* type = nullptr;
  PyObject* value = nullptr;
  PyObject* trace = nullptr;
  PyErr_Fetch(&type, &value, &trace);
  PyErr_NormalizeException(&type, &value, &trace);
  if (trace != nullptr) PyException_SetTraceback(value, trace);
  Py_XDECREF(type);
  Py_XDECREF(trace);
  auto exception = py::reinterpret_steal<py::object>(value);
  if (PyObject_TypeCheck(value, reinterpret_cast<PyTypeObject*>(PyExc_Exception)) != 0) {
    throw HostError(std::move(exception));
  }
  throw HostInterrupt(std::move(exception));
}

void stay_until_exit() noexcept {
  for (;;) ::pause();
}

void translate_exception() noexcept {
  try {
    throw;
  } catch (const HostError& error) {
    error.restore();
  } catch (const HostInterrupt& interrupt) {
    interrupt.restore();
  } catch (const UnknownComponent& error) {
    set_error(PyExc_ValueError, error.message());
  } catch (const std::invalid_argument& error) {
    set_error(PyExc_ValueError, error.what());
  } catch (const std::domain_error&) {
    set_error(PyExc_ZeroDivisionError, "float division by zero");
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  } catch (const std::exception& error) {
    set_error(PyExc_RuntimeError, error.what());
  } catch (...) {
    set_error(PyExc_SystemError, "an unknown error");
  }
}

}  // namespace tarnwick::python
