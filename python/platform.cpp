#include "platform.h"

#include "calls.h"
#include "module.h"
#include "strings.h"

namespace tarnwick::python {
namespace {

/// Marks an exception as the one being handled, for what a log handler or a raise in it sees.
class Handling {
 public:
  explicit Handling(const py::object& exception)
      : outer_(py::reinterpret_steal<py::object>(PyErr_GetHandledException())) {
    PyErr_SetHandledException(exception.ptr());
  }
  Handling(const Handling&) = delete;
  Handling& operator=(const Handling&) = delete;
  ~Handling() { PyErr_SetHandledException(outer_.ptr()); }

 private:
  py::object outer_;
};

/// The Python exception for an error of the component's own, which has none yet.
py::object as_exception(const std::exception_ptr& error) {
  try {
    std::rethrow_exception(error);
  } catch (const HostError& raised) {
    return raised.object();
  } catch (...) {
    translate_exception();
  }
  try {
    throw_raised();
  } catch (const HostError& raised) {
    return raised.object();
  }
}

class HostLogger final : public Logger {
 public:
  void warning(std::string_view message, std::string_view argument,
               const std::exception_ptr& error) override {
    const py::object exception = as_exception(error);
    const Handling handling(exception);
    const py::object logger = attribute(module_object(), names::logger);
    const py::object arguments =
        checked(PyTuple_Pack(2, to_python(message).ptr(), to_python(argument).ptr()));
    const py::object keywords = new_dict();
    set_item(keywords, names::exc_info, exception);
    const py::object warn = attribute(logger, names::warning);
    asked([&] { return PyObject_Call(warn.ptr(), arguments.ptr(), keywords.ptr()); });
  }
};

class WithoutLock final : public DetachedWork {
 public:
  void run(std::size_t bytes, const std::function<void()>& work) override {
    if (bytes < WORTH_A_RELEASE) return work();
    const Released released;
    work();
  }

 private:
  // Matching this much takes some ten microseconds; taking the lock back can cost as much where threads wait.
  static constexpr std::size_t WORTH_A_RELEASE = 16384;

  class Released {
   public:
    Released() : state_(PyEval_SaveThread()) {}
    Released(const Released&) = delete;
    Released& operator=(const Released&) = delete;
    ~Released() {
      until_exit([&] { PyEval_RestoreThread(state_); });
    }

   private:
    PyThreadState* state_;
  };
};

}  // namespace

Platform host_platform() {
  static HostLogger logger;
  static WithoutLock detached_work;
  return {&logger, &detached_work};
}

}  // namespace tarnwick::python
