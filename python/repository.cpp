#include "repository.h"

namespace tarnwick::python {
namespace {

py::object path_list(const std::vector<Text>& paths) {
  return to_list(paths, [](const Text& path) { return to_python(path); });
}

/// The id of a component or a file.
std::optional<std::int64_t> read_id(Arena& arena, const py::object& record, Integers& ids, const char* what) {
  const py::handle object = arena.keep(attribute(record, names::id));
  const std::optional<std::int64_t> id = to_optional_integer(object, what);
  if (id) ids.remember(*id, object);
  return id;
}

}  // namespace

SymbolMatches HostRepository::search_symbols(const Text& pattern, std::int64_t limit,
                                             bool source_only) const {
  const py::object answer = call_method_named(
      object_, names::search_symbols, to_python(pattern), names::limit, checked(PyLong_FromLongLong(limit)),
      names::source_only, arena_->source_only ? arena_->source_only : python_bool(source_only));
  return {to_symbols(*arena_, first_of(answer, 3))};
}

std::optional<Component> HostRepository::get_component_by_name(const Text& name) const {
  const py::object component = call_method(object_, names::get_component_by_name, to_python(name));
  if (component.is_none()) return std::nullopt;
  return Component{read_id(*arena_, component, arena_->component_ids, "a component's id")};
}

std::vector<File> HostRepository::get_files_by_component(std::int64_t component_id) const {
  const py::object id = arena_->component_ids.object(component_id);
  std::vector<File> files;
  walk(call_method(object_, names::get_files_by_component, id), [&](const py::object& file) {
    files.push_back({read_id(*arena_, file, arena_->file_ids, "a file's id")});
  });
  return files;
}

std::shared_ptr<const PathMap> HostRepository::get_file_paths_batch(
    const std::vector<SymbolPtr>& symbols) const {
  return arena_->lend<HostPathMap>(call_method(object_, names::get_file_paths_batch, to_python(symbols)));
}

std::shared_ptr<const IdMap<OrderKey>> HostRepository::production_fan_in(
    const std::vector<std::int64_t>& ids) const {
  return arena_->lend<HostFanIn>(call_method(object_, names::production_fan_in, id_list(ids)));
}

std::shared_ptr<const PathSet> HostRepository::test_paths(const std::vector<Text>& paths) const {
  return arena_->lend<HostPathSet>(call_method(object_, names::test_paths, path_list(paths)));
}

std::shared_ptr<const IdMap<SymbolPtr>> HostRepository::symbols_with_paths(
    const std::vector<std::int64_t>& ids) const {
  return arena_->lend<HostSymbolMap>(call_method(object_, names::symbols_with_paths, id_list(ids)));
}

std::shared_ptr<const TestRecords> HostRepository::find_covering_tests(const std::vector<Text>& paths) const {
  return arena_->lend<HostTestRecords>(call_method(object_, names::find_covering_tests, path_list(paths)));
}

std::vector<SymbolPtr> HostRepository::get_symbols_by_file(std::int64_t file_id) const {
  const py::object id = arena_->file_ids.object(file_id);
  return to_symbols(*arena_, call_method(object_, names::get_symbols_by_file, id));
}

References HostRepository::get_references(const Text& fqn) const {
  const py::object references = first_of(call_method(object_, names::get_references, to_python(fqn)), 2);
  References answer;
  if (!is_true(references)) return answer;
  walk(references, [&](py::object reference) {
    answer.references.push_back(arena_->lend<HostReference>(std::move(reference)));
  });
  return answer;
}

SymbolPtr HostRepository::get_symbol_by_fqn(const Text& fqn) const {
  py::object symbol = call_method(object_, names::get_symbol_by_fqn, to_python(fqn));
  if (symbol.is_none()) return nullptr;
  return arena_->lend<HostSymbol>(std::move(symbol));
}

py::object HostRepository::id_list(const std::vector<std::int64_t>& ids) const {
  return to_list(ids, [&](std::int64_t id) { return arena_->symbol_ids.object(id); });
}

}  // namespace tarnwick::python
