#include "symbols.h"

namespace tarnwick::python {

std::optional<std::int64_t> HostSymbol::id() const {
  if (!id_known_) {
    const py::object object = attribute(object_, names::id);
    id_ = to_optional_integer(object, "a symbol's id");
    if (id_) arena_->symbol_ids.remember(*id_, object);
    id_known_ = true;
  }
  return id_;
}

std::optional<std::int64_t> HostSymbol::file_id() const {
  const py::object object = attribute(object_, names::file_id);
  const std::optional<std::int64_t> id = to_optional_integer(object, "a symbol's file_id");
  if (id) arena_->file_ids.remember(*id, object);
  return id;
}

std::int64_t HostSymbol::start_line() const {
  return to_integer(read(details().start_line, names::start_line), "a symbol's start_line");
}

std::int64_t HostSymbol::end_line() const {
  return to_integer(attribute(object_, names::end_line), "a symbol's end_line");
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
  set_item(entry, names::fqn, fqn_.object());
  set_item(entry, names::name, name_.object());
  set_item(entry, names::kind, kind_.object());
  set_item(entry, names::file, file);
  set_item(entry, names::line, all.start_line);
  set_item(entry, names::signature, all.signature.object);
  set_item(entry, names::docstring, all.docstring.object);
  set_item(entry, names::docstring_truncated, all.docstring_truncated);
}

const Text& HostSymbol::required(HostText& member, const Name& name) const {
  const Text& text = read(member, name);
  if (member.object().is_none()) {
    throw_new(PyExc_TypeError, "a symbol's %s must be a str, not None", name.text());
  }
  return text;
}

HostSymbol::Details& HostSymbol::details() const {
  if (details_ == nullptr) details_ = &arena_->make<Details>();
  return *details_;
}

const py::object& HostSymbol::read(py::object& member, const Name& name) const {
  if (!member) member = attribute(object_, name);
  return member;
}

const OptionalText& HostSymbol::read(LongText& member, const Name& name) const {
  if (member.converted) return member.text;
  const py::object& object = read(member.object, name);
  if (PyUnicode_Check(object.ptr()) == 0 && is_true(object)) {
    throw_new(PyExc_TypeError, "a symbol's %s must be a str or None, not %.200s", name.text(),
              Py_TYPE(object.ptr())->tp_name);
  }
  member.text = arena_->optional_text(object);
  member.converted = true;
  return member.text;
}

const py::object& to_python(const SymbolPtr& symbol) {
  // Every symbol of a call comes from the host through this module.
  return static_cast<const HostSymbol&>(*symbol).object();
}

std::vector<SymbolPtr> to_symbols(Arena& arena, py::handle values) {
  std::vector<SymbolPtr> symbols;
  symbols.reserve(size_hint(values));
  walk(values,
       [&](py::object object) { symbols.push_back(arena.lend<HostSymbol>(arena, std::move(object))); });
  return symbols;
}

}  // namespace tarnwick::python
