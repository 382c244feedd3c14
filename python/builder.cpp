#include "builder.h"

#include <array>

#include "arguments.h"
#include "records.h"
#include "types.h"

namespace tarnwick::python {
namespace {

using Fields = BuilderCall::Fields;

constexpr const char* BUILDER_DOC =
    "Assembles context packs from an index and, optionally, a retriever.\n\n"
    "repository: the index that every query goes to.\n"
    "retriever: ranks the symbols of a task; None: no seeds but the caller's.\n"
    "list_tests: whether packs list the test files of their first source files.\n\n"
    "The three are fields, which may be assigned; each build reads the current ones. Builds may run on "
    "several\n"
    "threads at once if the index and the retriever allow it.";

std::optional<HostRetriever> read_retriever(Arena& arena, py::handle builder, Fields fields) {
  if (fields != Fields::ALL) return std::nullopt;
  py::object retriever = attribute(builder, names::retriever);
  if (retriever.is_none()) return std::nullopt;
  return std::optional<HostRetriever>(std::in_place, arena, arena.keep(std::move(retriever)));
}

bool read_list_tests(py::handle builder, Fields fields) {
  return (fields == Fields::ALL || fields == Fields::INDEX_AND_TESTS) &&
         is_true(attribute(builder, names::list_tests));
}

void set_attribute(py::handle object, const Name& name, py::handle value) {
  checked(PyObject_SetAttr(object.ptr(), name.object(), value.ptr()));
}

int initialise(PyObject* self, PyObject* arguments, PyObject* keywords) {
  PyObject* repository = nullptr;
  PyObject* retriever = Py_None;
  PyObject* list_tests = Py_False;
  parse(arguments, keywords, "O|O$O:ContextBuilder", {"repository", "retriever", "list_tests"}, &repository,
        &retriever, &list_tests);
  set_attribute(self, names::repository, repository);
  set_attribute(self, names::retriever, retriever);
  set_attribute(self, names::list_tests, list_tests);
  set_attribute(self, names::indexing_in_progress, Py_False);
  set_attribute(self, names::indexing_progress, checked(PyLong_FromLong(100)));
  return 0;
}

PyObject* init(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    initialise(self, arguments, keywords);
    return py::none();
  });
}

PyObject* set_indexing_status(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* in_progress = nullptr;
    PyObject* given = nullptr;
    parse(arguments, keywords, "O|O:set_indexing_status", {"in_progress", "progress"}, &in_progress, &given);
    const py::object progress =
        given != nullptr ? py::reinterpret_borrow<py::object>(given) : checked(PyLong_FromLong(100));
    set_attribute(self, names::indexing_in_progress, in_progress);
    set_attribute(self, names::indexing_progress, progress);
    return py::none();
  });
}

/// The arguments of a build, borrowed.
struct BuildArguments {
  PyObject* task = nullptr;
  PyObject* token_budget = nullptr;
  PyObject* component_filter = Py_None;
  PyObject* include_snippets = Py_False;
  PyObject* repo_root = Py_None;
  PyObject* prefer_kinds = Py_None;
  PyObject* source_only = Py_True;
  PyObject* wide_match = Py_False;
  PyObject* deep_fqns = Py_None;
  PyObject* seed_symbols = Py_None;

  void parse(PyObject* arguments, PyObject* keywords) {
    python::parse(arguments, keywords, "O|OOOOOOOOO:build_context_pack",
                  {"task", "token_budget", "component_filter", "include_snippets", "repo_root",
                   "prefer_kinds", "source_only", "wide_match", "deep_fqns", "seed_symbols"},
                  &task, &token_budget, &component_filter, &include_snippets, &repo_root, &prefer_kinds,
                  &source_only, &wide_match, &deep_fqns, &seed_symbols);
  }

  BuildOptions options(Arena& arena) const {
    BuildOptions options;
    if (token_budget != nullptr) options.token_budget = to_integer(token_budget, "token_budget");
    options.component_filter = arena.optional_text(py::reinterpret_borrow<py::object>(component_filter));
    options.include_snippets = is_true(include_snippets);
    if (options.include_snippets) {  // else neither is looked at
      options.repo_root = arena.optional_path(py::reinterpret_borrow<py::object>(repo_root));
      options.deep_fqns = to_text_set(arena, deep_fqns);
    }
    options.prefer_kinds = to_kinds(arena, prefer_kinds);
    options.source_only = is_true(source_only);
    arena.source_only = py::reinterpret_borrow<py::object>(source_only);
    options.wide_match = is_true(wide_match);
    if (seed_symbols != Py_None) {
      options.seed_symbols =
          SeedSymbols::Find([&arena, seeds = seed_symbols] { return to_symbols(arena, seeds); });
    }
    return options;
  }
};

PyObject* build_context_pack(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    BuildArguments given;
    given.parse(arguments, keywords);
    BuilderCall call(self, Fields::ALL);
    const Text task = call.arena.text(py::reinterpret_borrow<py::object>(given.task));
    py::object pack = to_python(call.component.build_context_pack(task, given.options(call.arena)));
    pack.attr("indexing_in_progress") = attribute(self, names::indexing_in_progress);
    pack.attr("progress") = attribute(self, names::indexing_progress);
    return pack;
  });
}

auto methods = std::to_array<PyMethodDef>(
    {{"__init__", keyword_function(init), METH_VARARGS | METH_KEYWORDS,
      "__init__($self, /, repository, retriever=None, *, list_tests=False)\n--\n\n"
      "Set the fields; ask nothing and check nothing.\n\n"
      "repository: the index that every query goes to.\n"
      "retriever: ranks the symbols of a task; None: no seeds but the caller's.\n"
      "list_tests: whether packs list the test files of their first source files."},
     {"set_indexing_status", keyword_function(set_indexing_status), METH_VARARGS | METH_KEYWORDS,
      "set_indexing_status($self, /, in_progress, progress=100)\n--\n\n"
      "Set the status that packs built from now on carry.\n\n"
      "in_progress: whether the index is being built.\n"
      "progress: of indexing, in percent; stored as given."},
     {"build_context_pack", keyword_function(build_context_pack), METH_VARARGS | METH_KEYWORDS,
      "build_context_pack($self, /, task, token_budget=800, component_filter=None,\n"
      "                   include_snippets=False, repo_root=None, prefer_kinds=None,\n"
      "                   source_only=True, wide_match=False, deep_fqns=None, seed_symbols=None)\n--\n\n"
      "Build the ContextPack of a coding task, a topic or a list of names.\n\n"
      "task: the text, as the tokenizer functions and the retriever take it.\n"
      "token_budget: the tokens the pack may cost, with 5 % above. An item that does not fit is left out.\n"
      "component_filter: the name of a component; only symbols of its files enter the pack.\n"
      "include_snippets: cut code snippets; needs repo_root.\n"
      "repo_root: the directory, a str or os.PathLike, that the index's paths are relative to.\n"
      "prefer_kinds: kinds of symbols to weigh up.\n"
      "source_only: keyword search leaves out documentation and data files.\n"
      "wide_match: keywords match inside names, not only whole names.\n"
      "deep_fqns: fully qualified names of symbols whose whole body is cut.\n"
      "seed_symbols: symbols that lead the pack, in this order; given, the retriever is not asked.\n\n"
      "Raises ValueError, 'Unknown component: ' and the name, when the index has no such component.\n"
      "What a collaborator raises comes through, except a failed look-up of covering tests: that is\n"
      "logged and becomes one of the pack's notes."}});

template <class Values>
py::dict kind_table(const Values& values) {
  py::dict table;
  for (const auto& [kind, value] : values) table[to_python(kind)] = value;
  return table;
}

py::dict constants() {
  py::dict attributes;
  attributes["NAME_MATCH_WEIGHT"] = ContextBuilder::NAME_MATCH_WEIGHT;
  attributes["EXPORT_WEIGHT"] = ContextBuilder::EXPORT_WEIGHT;
  attributes["PREFERRED_KIND_BOOST"] = ContextBuilder::PREFERRED_KIND_BOOST;
  attributes["COMPONENT_WIDENING"] = ContextBuilder::COMPONENT_WIDENING;
  attributes["TESTED_FILES"] = ContextBuilder::TESTED_FILES;
  attributes["TESTS_PER_FILE"] = ContextBuilder::TESTS_PER_FILE;
  attributes["TESTS_SHARE"] = ContextBuilder::TESTS_SHARE;
  attributes["MIN_RELEVANCE_SCORE"] = ContextBuilder::MIN_RELEVANCE_SCORE;
  attributes["MAX_SYMBOLS"] = ContextBuilder::MAX_SYMBOLS;
  attributes["SEED_BASE_SCORE"] = ContextBuilder::SEED_BASE_SCORE;
  attributes["SEED_RANK_STEP"] = ContextBuilder::SEED_RANK_STEP;
  attributes["KIND_WEIGHTS"] = kind_table(ContextBuilder::KIND_WEIGHTS);
  attributes["KIND_PRIORITY"] = kind_table(ContextBuilder::KIND_PRIORITY);
  return attributes;
}

}  // namespace

BuilderCall::BuilderCall(py::handle builder, Fields fields)
    : repository(arena,
                 arena.keep(fields == Fields::NONE ? py::none() : attribute(builder, names::repository))),
      tokenizer(arena),
      retriever_(read_retriever(arena, builder, fields)),
      component(repository, tokenizer, retriever_ ? &*retriever_ : nullptr, read_list_tests(builder, fields),
                host_platform()) {}

void add_context_builder(py::handle module) {
  PyObject* type = add_class(module, "ContextBuilder", BUILDER_DOC, constants(), methods);
  add_methods(type, step_methods());
}

}  // namespace tarnwick::python
