#include "arguments.h"

namespace tarnwick::python {

std::vector<Text> to_words(Arena& arena, py::handle values, const char* what) {
  std::vector<Text> words;
  walk(values, [&](py::object value) {
    if (PyUnicode_Check(value.ptr()) == 0) {
      throw_new(PyExc_TypeError, "%s must be a str, not %.200s", what, Py_TYPE(value.ptr())->tp_name);
    }
    words.push_back(arena.text(std::move(value)));
  });
  return words;
}

std::vector<Text> to_kinds(Arena& arena, py::handle values) {
  std::vector<Text> kinds;
  if (!is_true(values)) return kinds;
  walk(values, [&](py::object value) {
    if (PyUnicode_Check(value.ptr()) != 0) kinds.push_back(arena.text(std::move(value)));
  });
  return kinds;
}

TextSet to_text_set(Arena& arena, py::handle values) {
  const std::vector<Text> texts = to_kinds(arena, values);
  return {texts.begin(), texts.end()};
}

SeedRank to_seed_rank(py::handle map) {
  SeedRank positions;
  if (!is_true(map)) return positions;
  walk(call_method(map, names::items), [&](const py::object& item) {
    const py::object position = checked(PySequence_GetItem(item.ptr(), 1));
    const std::optional<std::int64_t> id = to_optional_integer(first_of(item, 2), "an id of seed_rank");
    if (id) positions.emplace(*id, to_integer(position, "a position of seed_rank"));
  });
  return positions;
}

std::vector<RankedSymbol> to_ranking(Arena& arena, py::handle ranked, bool symbols, std::size_t count) {
  std::vector<RankedSymbol> ranking;
  const py::object items = checked(PySequence_Fast(ranked.ptr(), "a ranking must be a sequence"));
  for (Py_ssize_t i = 0; i < PySequence_Fast_GET_SIZE(items.ptr()) && ranking.size() < count; ++i) {
    const auto item = py::reinterpret_borrow<py::object>(PySequence_Fast_GET_ITEM(items.ptr(), i));
    RankedSymbol& place = ranking.emplace_back();
    if (symbols) place.symbol = arena.lend<HostSymbol>(attribute(item, names::symbol));
    place.file_path = arena.optional_path(attribute(item, names::file_path));
  }
  return ranking;
}

std::vector<OptionalText> to_entry_kinds(Arena& arena, py::handle entries) {
  std::vector<OptionalText> kinds;
  walk(entries, [&](const py::object& entry) {
    const auto key = py::reinterpret_borrow<py::object>(names::kind.object());
    kinds.push_back(arena.optional_text(call_method(entry, names::get, key)));
  });
  return kinds;
}

}  // namespace tarnwick::python
