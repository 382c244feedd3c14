#include "answers.h"

#include <cmath>

namespace tarnwick::python {
namespace {

constexpr double EXACT_INTEGERS = 9007199254740992.0;  // 2^53: below, a double holds every integer

/// `value` as Python's own number; whole ones as int, which compares with everything a float does.
py::object number_object(double value) {
  const bool whole = std::isfinite(value) && std::trunc(value) == value && std::fabs(value) < EXACT_INTEGERS;
  return checked(whole ? PyLong_FromDouble(value) : PyFloat_FromDouble(value));
}

class HostOrder final : public Comparable {
 public:
  explicit HostOrder(py::object value) : value_(std::move(value)) {}

  bool less(const OrderKey& other) const override { return before(value_, object_of(other)); }
  bool greater(const OrderKey& other) const override { return before(object_of(other), value_); }

 private:
  static py::object object_of(const OrderKey& key) {
    if (!key.value) return number_object(key.number);
    return static_cast<const HostOrder&>(*key.value).value_;  // this module makes no other
  }
  static bool before(const py::object& a, const py::object& b) {
    return is_true(asked([&] { return PyObject_RichCompare(a.ptr(), b.ptr(), Py_LT); }));
  }

  py::object value_;
};

/// `map.get(id)`; None when missing.
py::object get(const py::object& map, const py::object& key) {
  if (PyDict_CheckExact(map.ptr()) == 0) return call_method(map, names::get, key);
  PyObject* value = PyDict_GetItemWithError(map.ptr(), key.ptr());
  if (value == nullptr && PyErr_Occurred() != nullptr) throw_raised();
  return value == nullptr ? py::none() : py::reinterpret_borrow<py::object>(value);
}

class HostFileTest final : public FileTest {
 public:
  HostFileTest(Arena& arena, py::object object) : arena_(&arena), object_(std::move(object)) {}
  OrderKey rank() const override { return order_key(*arena_, attribute(object_, names::rank)); }
  Text path() const override { return arena_->path(attribute(object_, names::path)); }

 private:
  Arena* arena_;
  py::object object_;
};

class HostTestRecord final : public TestRecord {
 public:
  HostTestRecord(Arena& arena, py::object object) : arena_(&arena), object_(std::move(object)) {}
  std::shared_ptr<const FileTest> alone(const Text& path) const override {
    py::object answer = call_method(object_, names::alone, to_python(path));
    if (answer.is_none()) return nullptr;
    return arena_->lend<HostFileTest>(*arena_, std::move(answer));
  }

 private:
  Arena* arena_;
  py::object object_;
};

/// An entry of a caller's map; absent, too, when it holds None.
OptionalText caller_text(Arena& arena, const py::object& caller, const Name& key) {
  return arena.optional_text(get(caller, py::reinterpret_borrow<py::object>(key.object())));
}

}  // namespace

OrderKey order_key(Arena& arena, py::object value) {
  if (PyFloat_CheckExact(value.ptr()) != 0) return {PyFloat_AS_DOUBLE(value.ptr())};
  if (PyLong_CheckExact(value.ptr()) != 0) {
    const double number = PyLong_AsDouble(value.ptr());
    const bool failed = number == -1.0 && PyErr_Occurred() != nullptr;
    if (!failed && std::fabs(number) < EXACT_INTEGERS) return {number};
    PyErr_Clear();  // too large for a double: compared as it is
  }
  return {0, arena.lend<HostOrder>(std::move(value))};
}

std::optional<OrderKey> HostFanIn::find(std::int64_t id) const {
  const py::object key = arena_->symbol_ids.object(id);
  if (PyDict_CheckExact(map_.ptr()) == 0) {
    return order_key(*arena_, call_method(map_, names::get, key, checked(PyLong_FromLong(0))));
  }
  PyObject* value = PyDict_GetItemWithError(map_.ptr(), key.ptr());
  if (value == nullptr && PyErr_Occurred() != nullptr) throw_raised();
  if (value == nullptr) return std::nullopt;
  return order_key(*arena_, py::reinterpret_borrow<py::object>(value));
}

std::optional<Text> HostPathMap::find(std::int64_t id) const {
  return arena_->optional_path(get(map_, arena_->symbol_ids.object(id)));
}

std::vector<Text> HostPathMap::values() const {
  const py::object values = PyDict_CheckExact(map_.ptr()) != 0 ? checked(PyDict_Values(map_.ptr()))
                                                               : call_method(map_, names::values);
  std::vector<Text> paths;
  paths.reserve(size_hint(values));
  // A path that is None goes on to the index as it came.
  walk(values, [&](py::object path) {
    paths.push_back(path.is_none() ? arena_->text(std::move(path)) : arena_->path(std::move(path)));
  });
  return paths;
}

std::optional<SymbolPtr> HostSymbolMap::find(std::int64_t id) const {
  const py::object key = arena_->symbol_ids.object(id);
  if (!python::contains(map_, key)) return std::nullopt;
  const py::object entry = asked([&] { return PyObject_GetItem(map_.ptr(), key.ptr()); });
  return arena_->lend<HostSymbol>(*arena_, first_item(entry));
}

std::vector<Text> HostPathSet::values() const {
  std::vector<Text> paths;
  python::walk(paths_, [&](py::object path) { paths.push_back(arena_->path(std::move(path))); });
  return paths;
}

void HostTestRecords::walk(const std::function<void(const TestRecord&)>& visit) const {
  python::walk(records_, [&](py::object record) { visit(HostTestRecord(*arena_, std::move(record))); });
}

std::optional<CallerSymbol> HostReference::caller_symbol() const {
  const py::object caller = attribute(object_, names::caller_symbol);
  if (!is_true(caller)) return std::nullopt;
  return CallerSymbol{caller_text(*arena_, caller, names::fqn), caller_text(*arena_, caller, names::kind),
                      caller_text(*arena_, caller, names::name)};
}

}  // namespace tarnwick::python
