#include "retrieval.h"

#include <limits>

#include "arguments.h"
#include "module.h"

namespace tarnwick::python {
namespace {

constexpr const char* RETRIEVAL_MODULE = "tarnwick.workers.retrieval";

/// Stands for None where the component has integers only; Integers gives None back for it.
constexpr std::int64_t NO_ID = std::numeric_limits<std::int64_t>::min();

class HostHit final : public Adapter<Hit> {
 public:
  using Adapter::Adapter;

  double score() const override { return to_real(attribute(object_, names::score)); }
  std::int64_t symbol_id() const override {
    const py::handle object = arena_->keep(attribute(symbol(), names::id));
    // None goes to the index like any id, which does not know it.
    const std::int64_t id = to_optional_integer(object, "the id of a hit's symbol").value_or(NO_ID);
    arena_->symbol_ids.remember(id, object);
    return id;
  }
  Text symbol_kind() const override { return arena_->text(attribute(symbol(), names::kind)); }

 private:
  py::object symbol() const { return attribute(object_, names::symbol); }
};

py::object tokenizer_function(const Name& name) {
  if (PyObject* set_by_host = PyDict_GetItemWithError(module_dict().ptr(), name.object())) {
    return py::reinterpret_borrow<py::object>(set_by_host);
  }
  if (PyErr_Occurred() != nullptr) throw_raised();
  return retrieval_attribute(name.object());
}

py::object call(const Name& function, py::handle argument) {
  const py::object found = tokenizer_function(function);
  return asked([&] { return PyObject_CallOneArg(found.ptr(), argument.ptr()); });
}

}  // namespace

RetrievalResult HostRetriever::retrieve(const Text& task, std::int64_t limit, bool include_tests) const {
  const py::object answer = call_method_named(
      object_, names::retrieve, to_python(task), names::limit, checked(PyLong_FromLongLong(limit)),
      names::include_tests, arena_->include_tests ? arena_->include_tests : python_bool(include_tests));
  RetrievalResult result;
  walk(attribute(answer, names::hits),
       [&](py::object hit) { result.hits.push_back(arena_->lend<HostHit>(std::move(hit))); });
  result.note = arena_->optional_text(attribute(answer, names::note));
  return result;
}

std::vector<Text> HostQueryTerms::values() const {
  return to_words(*arena_, object_, "a term of query_terms");
}

std::vector<Text> HostTokenizer::query_names(const Text& task) const {
  return to_words(*arena_, call(names::query_names, to_python(task)), "a name of query_names");
}

std::shared_ptr<const QueryTerms> HostTokenizer::query_terms(const Text& task) const {
  return arena_->lend<HostQueryTerms>(call(names::query_terms, to_python(task)));
}

bool HostTokenizer::is_test_query(const QueryTerms& terms) const {
  // Every answer of query_terms comes from above.
  arena_->include_tests = call(names::is_test_query, static_cast<const HostQueryTerms&>(terms).object());
  return is_true(arena_->include_tests);
}

py::object retrieval_attribute(py::handle name) {
  static PyObject* const module_name = PyUnicode_InternFromString(RETRIEVAL_MODULE);
  auto module =
      py::reinterpret_borrow<py::object>(PyDict_GetItemWithError(PyImport_GetModuleDict(), module_name));
  if (!module && PyErr_Occurred() != nullptr) throw_raised();
  if (!module || module.is_none()) module = asked([&] { return PyImport_Import(module_name); });
  return asked([&] { return PyObject_GetAttr(module.ptr(), name.ptr()); });
}

bool is_tokenizer_function(py::handle name) {
  for (const Name* function : {&names::query_names, &names::query_terms, &names::is_test_query}) {
    const int equal = PyUnicode_Compare(name.ptr(), function->object());
    if (equal == 0) return true;
  }
  return false;
}

}  // namespace tarnwick::python
