// The steps of a build, open to the host under their own names.
#include "arguments.h"
#include "builder.h"
#include "covering_tests.h"
#include "records.h"

#include <array>

namespace tarnwick::python {
namespace {

using Fields = BuilderCall::Fields;

py::object borrowed(PyObject* object) {
  return py::reinterpret_borrow<py::object>(object);
}

/// A list, or None when there is nothing to list.
template <class Items>
py::object list_or_none(const Items& items) {
  return items.empty() ? py::none() : to_python(items);
}

PyObject* component_files(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&]() -> py::object {
    PyObject* component_filter = nullptr;
    parse(arguments, keywords, "O:_component_files", {"component_filter"}, &component_filter);
    BuilderCall call(self, Fields::INDEX);
    const auto files = call.component._component_files(call.arena.optional_text(borrowed(component_filter)));
    if (!files) return py::none();
    py::object set = checked(PySet_New(nullptr));
    for (const std::int64_t id : *files) checked(PySet_Add(set.ptr(), call.arena.file_ids.object(id).ptr()));
    return set;
  });
}

PyObject* get_candidate_symbols(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* words = nullptr;
    PyObject* component_filter = nullptr;
    PyObject* source_only = Py_True;
    PyObject* wide_match = Py_False;
    parse(arguments, keywords, "OO|OO:_get_candidate_symbols",
          {"keywords", "component_filter", "source_only", "wide_match"}, &words, &component_filter,
          &source_only, &wide_match);
    BuilderCall call(self, Fields::INDEX);
    call.arena.source_only = borrowed(source_only);
    return to_python(call.component._get_candidate_symbols(
        to_words(call.arena, words, "a keyword"), call.arena.optional_text(borrowed(component_filter)),
        is_true(source_only), is_true(wide_match)));
  });
}

PyObject* retrieved(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* retriever = nullptr;
    PyObject* task = nullptr;
    PyObject* include_tests = nullptr;
    PyObject* limit = nullptr;
    PyObject* prefer_kinds = nullptr;
    parse(arguments, keywords, "OOOOO:_retrieved",
          {"retriever", "task", "include_tests", "limit", "prefer_kinds"}, &retriever, &task, &include_tests,
          &limit, &prefer_kinds);
    BuilderCall call(self, Fields::INDEX);
    call.arena.include_tests = borrowed(include_tests);
    const HostRetriever asked(call.arena, borrowed(retriever));
    const auto answer =
        call.component._retrieved(asked, call.arena.text(borrowed(task)), is_true(include_tests),
                                  to_integer(limit, "limit"), to_kinds(call.arena, prefer_kinds));
    return checked(PyTuple_Pack(2, to_python(answer.symbols).ptr(), to_python(answer.note).ptr()));
  });
}

PyObject* calculate_name_match(PyObject* /*self*/, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* symbol = nullptr;
    PyObject* words = nullptr;
    parse(arguments, keywords, "OO:_calculate_name_match", {"symbol", "keywords"}, &symbol, &words);
    Arena arena;
    const HostSymbol asked(arena, borrowed(symbol));
    return checked(PyFloat_FromDouble(
        ContextBuilder::_calculate_name_match(asked, to_words(arena, words, "a keyword"))));
  });
}

PyObject* calculate_relevance_score(PyObject* /*self*/, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* symbol = nullptr;
    PyObject* words = nullptr;
    PyObject* prefer_kinds = Py_None;
    parse(arguments, keywords, "OO|O:_calculate_relevance_score", {"symbol", "keywords", "prefer_kinds"},
          &symbol, &words, &prefer_kinds);
    Arena arena;
    const HostSymbol asked(arena, borrowed(symbol));
    return checked(PyFloat_FromDouble(ContextBuilder::_calculate_relevance_score(
        asked, to_words(arena, words, "a keyword"), to_kinds(arena, prefer_kinds))));
  });
}

PyObject* rank_symbols(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* candidates = nullptr;
    PyObject* words = nullptr;
    PyObject* include_tests = Py_False;
    PyObject* prefer_kinds = Py_None;
    PyObject* seed_rank = Py_None;
    parse(arguments, keywords, "OO|OOO:_rank_symbols",
          {"candidates", "keywords", "include_tests", "prefer_kinds", "seed_rank"}, &candidates, &words,
          &include_tests, &prefer_kinds, &seed_rank);
    BuilderCall call(self, Fields::INDEX);
    return to_python(call.component._rank_symbols(
        to_symbols(call.arena, candidates), to_words(call.arena, words, "a keyword"),
        {is_true(include_tests), to_kinds(call.arena, prefer_kinds), to_seed_rank(seed_rank)}));
  });
}

PyObject* extract_snippet(PyObject* /*self*/, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* file_path = nullptr;
    PyObject* start_line = nullptr;
    PyObject* end_line = nullptr;
    PyObject* so_far = nullptr;
    PyObject* max_lines = nullptr;
    PyObject* total_cap = nullptr;
    parse(arguments, keywords, "OOOO|OO:_extract_snippet",
          {"file_path", "start_line", "end_line", "total_lines_so_far", "max_lines", "total_cap"}, &file_path,
          &start_line, &end_line, &so_far, &max_lines, &total_cap);
    Arena arena;
    const Text path = arena.path(borrowed(file_path));
    const std::int64_t start = to_clipped_integer(start_line, "start_line");
    const std::int64_t end = to_clipped_integer(end_line, "end_line");
    const std::int64_t lines_so_far = to_clipped_integer(so_far, "total_lines_so_far");
    const std::int64_t symbol_cap =
        max_lines == nullptr ? MAX_SNIPPET_LINES_PER_SYMBOL : to_clipped_integer(max_lines, "max_lines");
    const std::int64_t pack_cap =
        total_cap == nullptr ? MAX_TOTAL_SNIPPET_LINES : to_clipped_integer(total_cap, "total_cap");
    ContextBuilder::Snippet snippet;
    host_platform().run_detached(std::numeric_limits<std::size_t>::max(), [&] {
      snippet = ContextBuilder::_extract_snippet(path, start, end, lines_so_far, symbol_cap, pack_cap);
    });
    const py::object lines = checked(PyLong_FromLongLong(snippet.lines));
    return checked(PyTuple_Pack(2, to_python(snippet.text).ptr(), lines.ptr()));
  });
}

PyObject* build_pack(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* ranked = nullptr;
    PyObject* max_tokens = nullptr;
    PyObject* include_snippets = Py_False;
    PyObject* repo_root = Py_None;
    PyObject* deep_fqns = Py_None;
    PyObject* deep_max_lines = nullptr;
    parse(arguments, keywords, "OO|OOOO:_build_pack",
          {"ranked", "max_tokens", "include_snippets", "repo_root", "deep_fqns", "deep_max_lines"}, &ranked,
          &max_tokens, &include_snippets, &repo_root, &deep_fqns, &deep_max_lines);
    BuilderCall call(self, Fields::INDEX_AND_TESTS);
    PackOptions options;
    options.include_snippets = is_true(include_snippets);
    if (options.include_snippets) {
      options.repo_root = call.arena.optional_path(borrowed(repo_root));
      options.deep_fqns = to_text_set(call.arena, deep_fqns);
      if (deep_max_lines != nullptr)
        options.deep_max_lines = to_clipped_integer(deep_max_lines, "deep_max_lines");
    }
    const auto ranking = to_ranking(call.arena, ranked, true, ContextBuilder::MAX_SYMBOLS);
    return to_python(call.component._build_pack(ranking, to_integer(max_tokens, "max_tokens"), options));
  });
}

PyObject* tested_sources(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* ranked = nullptr;
    parse(arguments, keywords, "O:_tested_sources", {"ranked"}, &ranked);
    BuilderCall call(self, Fields::INDEX);
    return to_python(call.component._tested_sources(
        to_ranking(call.arena, ranked, false, std::numeric_limits<std::size_t>::max())));
  });
}

PyObject* test_rows(PyObject* /*self*/, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* sources = nullptr;
    PyObject* tests = nullptr;
    parse(arguments, keywords, "OO:_test_rows", {"sources", "tests"}, &sources, &tests);
    Arena arena;
    std::vector<Text> paths;
    walk(sources, [&](const py::object& path) { paths.push_back(arena.path(path)); });
    HostTests asked(arena, borrowed(tests));
    return to_python(ContextBuilder::_test_rows(paths, asked));
  });
}

PyObject* extract_parameters(PyObject* /*self*/, PyObject* arguments, PyObject* keywords) {
  return at_border([&]() -> py::object {
    PyObject* docstring = nullptr;
    parse(arguments, keywords, "O:_extract_parameters", {"docstring"}, &docstring);
    if (!is_true(docstring)) return py::none();
    if (PyUnicode_Check(docstring) == 0) {
      throw_new(PyExc_TypeError, "docstring must be a str or None, not %.200s", Py_TYPE(docstring)->tp_name);
    }
    Arena arena;
    const Text text = arena.text(borrowed(docstring));
    std::vector<Parameter> parameters;
    host_platform().run_detached(text.view().size(),
                                 [&] { parameters = ContextBuilder::_extract_parameters(text.view()); });
    return list_or_none(parameters);
  });
}

PyObject* get_related_symbols(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* symbol = nullptr;
    PyObject* file_path = nullptr;
    PyObject* limit = nullptr;
    parse(arguments, keywords, "OO|O:_get_related_symbols", {"symbol", "file_path", "limit"}, &symbol,
          &file_path, &limit);
    BuilderCall call(self, Fields::INDEX);
    const HostSymbol asked(call.arena, borrowed(symbol));
    const OptionalText path = call.arena.optional_path(borrowed(file_path));
    return list_or_none(limit == nullptr
                            ? call.component._get_related_symbols(asked, path)
                            : call.component._get_related_symbols(asked, path, to_integer(limit, "limit")));
  });
}

PyObject* get_usage_example(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* symbol = nullptr;
    parse(arguments, keywords, "O:_get_usage_example", {"symbol"}, &symbol);
    BuilderCall call(self, Fields::INDEX);
    const HostSymbol asked(call.arena, borrowed(symbol));
    return to_python(call.component._get_usage_example(asked));
  });
}

PyObject* generate_recommendations(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* task = nullptr;
    PyObject* symbols = nullptr;
    parse(arguments, keywords, "OO:_generate_recommendations", {"task", "symbols"}, &task, &symbols);
    BuilderCall call(self, Fields::NONE);
    return to_python(call.component._generate_recommendations(call.arena.text(borrowed(task)),
                                                              to_entry_kinds(call.arena, symbols)));
  });
}

constexpr int KEYWORDS = METH_VARARGS | METH_KEYWORDS;

auto methods = std::to_array<PyMethodDef>(
    {{"_component_files", keyword_function(component_files), KEYWORDS,
      "_component_files($self, /, component_filter)\n--\n\n"
      "Return the set of the ids of a component's files; None without a filter.\n\n"
      "component_filter: the component's name; None and '' filter nothing.\n\n"
      "Raises ValueError for an unknown component."},
     {"_get_candidate_symbols", keyword_function(get_candidate_symbols), KEYWORDS,
      "_get_candidate_symbols($self, /, keywords, component_filter, source_only=True, "
      "wide_match=False)\n--\n\n"
      "Return the symbols whose names the first ten keywords match, each once.\n\n"
      "keywords: the words to search.\n"
      "component_filter: the name of a component, to whose files the search is confined; None and '' for "
      "none.\n"
      "source_only: leave out documentation and data files.\n"
      "wide_match: match inside names, not only whole names."},
     {"_retrieved", keyword_function(retrieved), KEYWORDS,
      "_retrieved($self, /, retriever, task, include_tests, limit, prefer_kinds)\n--\n\n"
      "Return the symbols that the retriever ranks for a task, best first, and its note.\n\n"
      "retriever: the retriever to ask.\n"
      "task: the task, as asked.\n"
      "include_tests: whether symbols of test files are ranked.\n"
      "limit: the most hits to ask for.\n"
      "prefer_kinds: kinds to weigh up, or None."},
     {"_calculate_name_match", keyword_function(calculate_name_match), KEYWORDS,
      "_calculate_name_match($self, /, symbol, keywords)\n--\n\n"
      "Return how well the best keyword matches a symbol's names: 1.0, 0.8, 0.6, 0.4 or 0.0.\n\n"
      "symbol: the symbol, of which name and fqn are read.\n"
      "keywords: the words to match."},
     {"_calculate_relevance_score", keyword_function(calculate_relevance_score), KEYWORDS,
      "_calculate_relevance_score($self, /, symbol, keywords, prefer_kinds=None)\n--\n\n"
      "Return the relevance score of a symbol, from 0.0 to 3.0.\n\n"
      "symbol: the symbol to score.\n"
      "keywords: the words to match.\n"
      "prefer_kinds: kinds to weigh up, or None."},
     {"_rank_symbols", keyword_function(rank_symbols), KEYWORDS,
      "_rank_symbols($self, /, candidates, keywords, include_tests=False, prefer_kinds=None, "
      "seed_rank=None)\n--\n\n"
      "Return the candidates as a list of RankedSymbol, best first.\n\n"
      "candidates: the symbols to rank.\n"
      "keywords: the task's keywords.\n"
      "include_tests: whether symbols of test files stay.\n"
      "prefer_kinds: kinds to weigh up, or None.\n"
      "seed_rank: positions of the seeds by symbol id, or None."},
     {"_extract_snippet", keyword_function(extract_snippet), KEYWORDS,
      "_extract_snippet($self, /, file_path, start_line, end_line, total_lines_so_far, max_lines=50, "
      "total_cap=500)\n--\n\n"
      "Return the lines of a file as a text, or None, and how many they are.\n\n"
      "file_path: the file, a str or os.PathLike.\n"
      "start_line: the first line, from 1.\n"
      "end_line: the last line, inclusive.\n"
      "total_lines_so_far: snippet lines already in the pack.\n"
      "max_lines: the most lines of this snippet.\n"
      "total_cap: the most snippet lines of the pack."},
     {"_build_pack", keyword_function(build_pack), KEYWORDS,
      "_build_pack($self, /, ranked, max_tokens, include_snippets=False, repo_root=None, deep_fqns=None, "
      "deep_max_lines=200)\n--\n\n"
      "Return the ContextPack of a ranking.\n\n"
      "ranked: the ranking, best first.\n"
      "max_tokens: the ceiling of the pack's cost.\n"
      "include_snippets: whether to cut snippets.\n"
      "repo_root: the directory that paths are relative to, or None.\n"
      "deep_fqns: symbols whose snippets may be longer, or None.\n"
      "deep_max_lines: the most lines of those."},
     {"_tested_sources", keyword_function(tested_sources), KEYWORDS,
      "_tested_sources($self, /, ranked)\n--\n\n"
      "Return the paths of the first source files of a ranking, each once.\n\n"
      "ranked: the ranking, best first."},
     {"_test_rows", keyword_function(test_rows), KEYWORDS,
      "_test_rows($self, /, sources, tests)\n--\n\n"
      "Return the rows of the sources' tests, each with its cost in tokens.\n\n"
      "sources: paths of source files.\n"
      "tests: a _CoveringTests, or anything with its `of`."},
     {"_extract_parameters", keyword_function(extract_parameters), KEYWORDS,
      "_extract_parameters($self, /, docstring)\n--\n\n"
      "Return the parameters that a docstring documents, as dicts, or None.\n\n"
      "docstring: the text, in any of the styles Google, Sphinx, JSDoc and TypeDoc, or None."},
     {"_get_related_symbols", keyword_function(get_related_symbols), KEYWORDS,
      "_get_related_symbols($self, /, symbol, file_path, limit=3)\n--\n\n"
      "Return other classes, functions and methods of a symbol's file, as dicts, or None.\n\n"
      "symbol: the symbol.\n"
      "file_path: the path of its file; without one there is nothing related.\n"
      "limit: the most to return."},
     {"_get_usage_example", keyword_function(get_usage_example), KEYWORDS,
      "_get_usage_example($self, /, symbol)\n--\n\n"
      "Return one line that shows how a symbol is used, or None.\n\n"
      "symbol: the symbol."},
     {"_generate_recommendations", keyword_function(generate_recommendations), KEYWORDS,
      "_generate_recommendations($self, /, task, symbols)\n--\n\n"
      "Return up to three hints for the reader of a pack.\n\n"
      "task: the task, as asked.\n"
      "symbols: the pack's entries."}});

}  // namespace

std::span<PyMethodDef> step_methods() {
  return methods;
}

}  // namespace tarnwick::python
