#include "symbols.h"

#include "readers.h"

namespace tarnwick::python {
namespace {

/// The values of a host's iterable in a list of our own, kept.
py::handle kept_list(Arena& arena, py::handle values) {
  return arena.keep(asked([&] { return PySequence_List(values.ptr()); }));
}

}  // namespace

std::optional<std::int64_t> HostSymbol::read_id() const {
  const py::handle object = arena_->keep(attribute(object_, names::id));
  id_ = to_optional_integer(object, "a symbol's id");
  if (id_) arena_->symbol_ids.remember(*id_, object);
  id_known_ = true;
  return id_;
}

std::optional<std::int64_t> HostSymbol::file_id() const {
  const py::handle object = arena_->keep(attribute(object_, names::file_id));
  const std::optional<std::int64_t> id = to_optional_integer(object, "a symbol's file_id");
  if (id) arena_->file_ids.remember(*id, object);
  return id;
}

bool HostSymbol::is_export() const {
  return is_true(read(is_export_, names::is_export));
}

std::int64_t HostSymbol::start_line() const {
  return to_clipped_integer(read(details().start_line, names::start_line), "a symbol's start_line");
}

std::int64_t HostSymbol::end_line() const {
  return to_clipped_integer(attribute(object_, names::end_line), "a symbol's end_line");
}

const OptionalText& HostSymbol::signature() const {
  return read(details().signature, names::signature);
}

const OptionalText& HostSymbol::docstring() const {
  return read(details().docstring, names::docstring);
}

bool HostSymbol::docstring_truncated() const {
  return is_true(read(details().docstring_truncated, names::docstring_truncated));
}

std::int64_t HostSymbol::token_count() const {
  return to_integer(call_method(object_, names::token_count), "a symbol's token_count()");
}

void HostSymbol::fetch_entry_fields() const {
  Details& all = details();
  read(fqn_, names::fqn);
  read(name_, names::name);
  read(kind_, names::kind);
  read(all.start_line, names::start_line);
  read(all.signature.object, names::signature);
  read(all.docstring.object, names::docstring);
  read(all.docstring_truncated, names::docstring_truncated);
}

void HostSymbol::fill_entry(py::handle entry, py::handle file) const {
  fetch_entry_fields();
  const Details& all = details();
  set_item(entry, names::fqn, fqn_->object());
  set_item(entry, names::name, name_->object());
  set_item(entry, names::kind, kind_->object());
  set_item(entry, names::file, file);
  set_item(entry, names::line, all.start_line);
  set_item(entry, names::signature, all.signature.object);
  set_item(entry, names::docstring, all.docstring.object);
  set_item(entry, names::docstring_truncated, all.docstring_truncated);
}

void HostSymbol::set_scored_members(py::handle tuple) const {
  const auto take = [&](Member& member, Py_ssize_t at) {
    const py::handle object = PyTuple_GET_ITEM(tuple.ptr(), at);
    if (!member && !object.is_none()) set(member, object);  // for None there is an error when it is asked for
  };
  take(name_, 0);
  take(fqn_, 1);
  is_export_ = PyTuple_GET_ITEM(tuple.ptr(), 2);
  take(kind_, 3);
}

void HostSymbol::set(Member& member, py::handle object) const {
  member.emplace(object, arena_->view(object));
}

const HostText& HostSymbol::read(Member& member, const Name& name) const {
  if (!member) set(member, arena_->keep(attribute(object_, name)));
  return *member;
}

const Text& HostSymbol::required(Member& member, const Name& name) const {
  const HostText& text = read(member, name);
  if (text.object().is_none()) {
    throw_new(PyExc_TypeError, "a symbol's %s must be a str, not None", name.text());
  }
  return text.text();
}

HostSymbol::Details& HostSymbol::details() const {
  if (details_ == nullptr) details_ = &arena_->make<Details>();
  return *details_;
}

py::handle HostSymbol::read(py::handle& member, const Name& name) const {
  if (!member) member = arena_->keep(attribute(object_, name));
  return member;
}

const OptionalText& HostSymbol::read(LongText& member, const Name& name) const {
  if (member.converted) return member.text;
  const py::handle object = read(member.object, name);
  if (PyUnicode_Check(object.ptr()) == 0 && is_true(object)) {
    throw_new(PyExc_TypeError, "a symbol's %s must be a str or None, not %.200s", name.text(),
              Py_TYPE(object.ptr())->tp_name);
  }
  if (!object.is_none()) member.text = arena_->text_of(object);
  member.converted = true;
  return member.text;
}

py::object to_python(const std::vector<SymbolPtr>& symbols) {
  return to_list(symbols, [](const SymbolPtr& symbol) {
    return py::reinterpret_borrow<py::object>(host_object(symbol));
  });
}

std::vector<SymbolPtr> to_symbols(Arena& arena, py::handle values) {
  const py::handle list = kept_list(arena, values);
  const auto count = static_cast<std::size_t>(PyList_GET_SIZE(list.ptr()));
  auto* symbols = arena.room<HostSymbol>(count);
  std::vector<SymbolPtr> pointers;
  pointers.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const py::handle object = PyList_GET_ITEM(list.ptr(), static_cast<Py_ssize_t>(i));
    pointers.push_back(Arena::shared(*new (symbols + i) HostSymbol(arena, object)));
  }
  return pointers;
}

void read_scored_members(Arena& arena, const std::vector<SymbolPtr>& symbols) {
  if (symbols.empty()) return;
  const py::handle members = arena.keep(read_scored_members(to_python(symbols)));
  Py_ssize_t at = 0;
  for (const SymbolPtr& symbol : symbols) {
    static_cast<const HostSymbol&>(*symbol).set_scored_members(PyList_GET_ITEM(members.ptr(), at++));
  }
}

}  // namespace tarnwick::python
