// Arguments of Python calls as the component's parameters.
#pragma once

#include <initializer_list>
#include <string>

#include "symbols.h"
#include "tarnwick/workers/context_builder.h"

namespace tarnwick::python {

/// A function with keywords, as a method table takes it.
inline PyCFunction keyword_function(PyCFunctionWithKeywords function) {
  return reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function));
}

/// Fills `values` (PyObject**, borrowed; left alone where an optional argument is not given) as
/// PyArg_ParseTupleAndKeywords does.
template <class... Values>
void parse(PyObject* arguments, PyObject* keywords, const char* format,
           std::initializer_list<const char*> names, Values... values) {
  std::array<char*, sizeof...(Values) + 1> list{};
  std::size_t at = 0;
  for (const char* name : names) list.at(at++) = const_cast<char*>(name);  // NOLINT: the interpreter's type
  if (PyArg_ParseTupleAndKeywords(arguments, keywords, format, list.data(), values...) == 0) throw_raised();
}

/// The words of an iterable; `what` names one in the TypeError for what is no str.
std::vector<Text> to_words(Arena& arena, py::handle values, const char* what);

/// The texts that others are compared with; none where `values` is false. What is no str is left out, since
/// no text equals it.
std::vector<Text> to_kinds(Arena& arena, py::handle values);
TextSet to_text_set(Arena& arena, py::handle values);

/// Positions by symbol id; none where `map` is false.
SeedRank to_seed_rank(py::handle map);

/// The files and, with `symbols`, the symbols of a ranking: at most the `count` first.
std::vector<RankedSymbol> to_ranking(Arena& arena, py::handle ranked, bool symbols, std::size_t count);

/// The kinds of a pack's entries; absent where an entry has none.
std::vector<OptionalText> to_entry_kinds(Arena& arena, py::handle entries);

}  // namespace tarnwick::python
