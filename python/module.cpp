#include "module.h"

#include <pybind11/pybind11.h>

#include "arguments.h"
#include "builder.h"
#include "readers.h"
#include "records.h"
#include "retrieval.h"

namespace tarnwick::python {
namespace {

PyObject* the_module = nullptr;

constexpr const char* MODULE_DOC =
    "Builds context packs: the code symbols most relevant to a coding task, within a token budget.\n\n"
    "ContextBuilder asks an index, optionally a retriever, and the three functions query_names, query_terms\n"
    "and is_test_query of tarnwick.workers.retrieval (or those set on this module), all of them objects of\n"
    "the host, which are asked for nothing but what a step uses.\n\n"
    "Threads: builds may run at once as far as the host's objects allow it. The interpreter lock is "
    "released\n"
    "while a source file is read and while patterns search a long docstring.\n\n"
    "The module exists once per process: importing it anew gives the same module. A sub-interpreter that\n"
    "imports it gets an ImportError.";

PyObject* task_keywords(PyObject* /*module*/, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* task = nullptr;
    parse(arguments, keywords, "O:task_keywords", {"task"}, &task);
    Arena arena;
    return to_python(
        tarnwick::task_keywords(arena.text(py::reinterpret_borrow<py::object>(task)), HostTokenizer(arena)));
  });
}

PyObject* estimate_tokens(PyObject* /*module*/, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* text = nullptr;
    PyObject* chars_per_token = nullptr;
    parse(arguments, keywords, "O|O:estimate_tokens", {"text", "chars_per_token"}, &text, &chars_per_token);
    if (PyUnicode_Check(text) == 0 && is_true(text)) {
      throw_new(PyExc_TypeError, "text must be a str or None, not %.200s", Py_TYPE(text)->tp_name);
    }
    Arena arena;
    const Text characters = arena.text(py::reinterpret_borrow<py::object>(text));
    const std::int64_t tokens = chars_per_token == nullptr
                                    ? tarnwick::estimate_tokens(characters.view())
                                    : tarnwick::estimate_tokens(characters.view(), to_real(chars_per_token));
    return checked(PyLong_FromLongLong(tokens));
  });
}

/// Throws AttributeError; `cause` may be null.
[[noreturn]] void throw_missing(PyObject* name, py::handle cause) {
  try {
    throw_new(PyExc_AttributeError, "module '%s' has no attribute %R", MODULE_NAME, name);
  } catch (const HostError& error) {
    if (cause) PyException_SetCause(error.object().ptr(), cause.inc_ref().ptr());
    throw;
  }
}

/// Attributes that the module does not have itself.
PyObject* get_attribute(PyObject* /*module*/, PyObject* name) {
  return at_border([&]() -> py::object {
    if (PyUnicode_Check(name) == 0 || !is_tokenizer_function(name)) throw_missing(name, nullptr);
    try {
      return retrieval_attribute(name);
    } catch (const HostError& error) {
      if (PyErr_GivenExceptionMatches(error.object().ptr(), PyExc_ImportError) == 0) throw;
      throw_missing(name, error.object());  // what hasattr and patching tools take for an absent name
    }
  });
}

PyMethodDef functions[] = {  // NOLINT(*-avoid-c-arrays): the interpreter's type, ended by a null
    {"task_keywords", keyword_function(task_keywords), METH_VARARGS | METH_KEYWORDS,
     "task_keywords($module, /, task)\n--\n\n"
     "Return the words of a task that symbol names are matched against, each once.\n\n"
     "task: the text. Its names come first, whole and lowercased, then its terms; words of fewer than three\n"
     "characters are left out."},
    {"estimate_tokens", keyword_function(estimate_tokens), METH_VARARGS | METH_KEYWORDS,
     "estimate_tokens($module, /, text, chars_per_token=4.0)\n--\n\n"
     "Return roughly how many tokens a text costs: 0 for none, else at least 1.\n\n"
     "text: a str or None.\n"
     "chars_per_token: characters per token; 3.0 to 4.0 suits code, 4.0 to 5.0 prose.\n\n"
     "Raises ZeroDivisionError for a ratio of 0, unless the text is empty."},
    {"__getattr__", get_attribute, METH_O,
     "__getattr__($module, name, /)\n--\n\nFind the tokenizer functions in tarnwick.workers.retrieval."},
    {nullptr, nullptr, 0, nullptr}};

void fill(const py::module_& module) {
  module.attr("MAX_SNIPPET_LINES_PER_SYMBOL") = MAX_SNIPPET_LINES_PER_SYMBOL;
  module.attr("MAX_TOTAL_SNIPPET_LINES") = MAX_TOTAL_SNIPPET_LINES;
  module.attr("ABS_MAX_TOTAL_SNIPPET_LINES") = ABS_MAX_TOTAL_SNIPPET_LINES;
  module.attr("_MIN_KEYWORD") = MIN_KEYWORD;
  module.attr("_NO_TESTS") = to_python(NO_TESTS);
  module.attr("logger") = py::module_::import("logging").attr("getLogger")(MODULE_NAME);
  make_reader();
  add_record_types(module);
  add_context_builder(module);
}

/// The module of the process; made at the first import.
PyObject* create(PyObject* /*spec*/, PyModuleDef* /*definition*/) {
  if (PyInterpreterState_Get() != PyInterpreterState_Main()) {
    PyErr_Format(PyExc_ImportError, "%s cannot be used in a sub-interpreter", MODULE_NAME);
    return nullptr;
  }
  if (the_module == nullptr) return PyModule_New(MODULE_NAME);
  Py_INCREF(the_module);
  return the_module;
}

int execute(PyObject* module) {
  if (the_module == module) return 0;
  PyObject* const done = at_border([&] {
    Py_INCREF(module);  // the code holds on to it, for as long as the process lives
    the_module = module;
    fill(py::reinterpret_borrow<py::module_>(module));
    return py::none();
  });
  if (done == nullptr) {
    Py_CLEAR(the_module);
    return -1;
  }
  Py_DECREF(done);
  return 0;
}

// NOLINTNEXTLINE(*-avoid-c-arrays): as above
PyModuleDef_Slot slots[] = {{Py_mod_create, reinterpret_cast<void*>(create)},
                            {Py_mod_exec, reinterpret_cast<void*>(execute)},
                            {0, nullptr}};

PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, "context_builder", MODULE_DOC, 0, functions, slots, nullptr, nullptr, nullptr};

}  // namespace

py::handle module_object() {
  return the_module;
}

py::handle module_dict() {
  return PyModule_GetDict(the_module);
}

}  // namespace tarnwick::python

/// What the interpreter calls to import the module.
extern "C" PYBIND11_EXPORT PyObject* PyInit_context_builder() {
  return PyModuleDef_Init(&tarnwick::python::definition);
}
