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
  HostOrder(Arena& /*arena*/, py::handle value) : value_(value) {}

  bool less(const OrderKey& other) const override { return before(value_, object_of(other)); }
  bool greater(const OrderKey& other) const override { return before(object_of(other), value_); }

 private:
  static py::object object_of(const OrderKey& key) {
    if (!key.value) return number_object(key.number);
    return py::reinterpret_borrow<py::object>(
        static_cast<const HostOrder&>(*key.value).value_);  // there is no other
  }
  static bool before(py::handle a, py::handle b) {
    return is_true(asked([&] { return PyObject_RichCompare(a.ptr(), b.ptr(), Py_LT); }));
  }

  py::handle value_;
};

/// The value for `key` in a dict; null when missing.
py::handle find_in(py::handle dict, py::handle key) {
  PyObject* value = until_exit([&] { return PyDict_GetItemWithError(dict.ptr(), key.ptr()); });
  if (value == nullptr && PyErr_Occurred() != nullptr) throw_raised();
  return value;
}

/// `map.get(key)`; None when missing.
py::object get(py::handle map, const py::object& key) {
  if (PyDict_CheckExact(map.ptr()) == 0) return call_method(map, names::get, key);
  const py::handle value = find_in(map, key);
  return value ? py::reinterpret_borrow<py::object>(value) : py::none();
}

class HostFileTest final : public Adapter<FileTest> {
 public:
  using Adapter::Adapter;
  OrderKey rank() const override { return order_key(*arena_, attribute(object_, names::rank)); }
  Text path() const override { return arena_->path(arena_->keep(attribute(object_, names::path))); }
};

class HostTestRecord final : public Adapter<TestRecord> {
 public:
  using Adapter::Adapter;
  std::shared_ptr<const FileTest> alone(const Text& path) const override {
    py::object answer = call_method(object_, names::alone, to_python(path));
    if (answer.is_none()) return nullptr;
    return arena_->lend<HostFileTest>(std::move(answer));
  }
};

/// An entry of a caller's map; absent, too, when it holds None.
OptionalText caller_text(Arena& arena, py::handle caller, const Name& key) {
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
  if (PyDict_CheckExact(object_.ptr()) == 0) {
    return order_key(*arena_, call_method(object_, names::get, key, checked(PyLong_FromLong(0))));
  }
  const py::handle value = find_in(object_, key);
  return value ? std::optional(order_key(*arena_, py::reinterpret_borrow<py::object>(value))) : std::nullopt;
}

std::optional<Text> HostPathMap::find(std::int64_t id) const {
  const py::object key = arena_->symbol_ids.object(id);
  if (PyDict_CheckExact(object_.ptr()) == 0)
    return arena_->optional_path(call_method(object_, names::get, key));
  const py::handle path = find_in(object_, key);
  return path ? arena_->optional_path(path) : std::nullopt;
}

std::vector<Text> HostPathMap::values() const {
  std::vector<Text> paths;
  // A path that is None goes on to the index as it came.
  const auto add = [&](const py::object& path) {
    paths.push_back(path.is_none() ? arena_->text(path) : arena_->path(path));
  };
  if (PyDict_CheckExact(object_.ptr()) == 0) {
    walk(call_method(object_, names::values), add);
    return paths;
  }
  const py::object values = checked(PyDict_Values(object_.ptr()));
  paths.reserve(size_hint(values));
  walk(values, add);
  return paths;
}

std::optional<SymbolPtr> HostSymbolMap::find(std::int64_t id) const {
  const py::object key = arena_->symbol_ids.object(id);
  if (!python::contains(object_, key)) return std::nullopt;
  const py::object entry = asked([&] { return PyObject_GetItem(object_.ptr(), key.ptr()); });
  return arena_->lend<HostSymbol>(first_item(entry));
}

bool HostPathSet::contains(const Text& path) const {
  const py::object object = to_python(path);
  if (PyAnySet_CheckExact(object_.ptr()) == 0) return python::contains(object_, object);
  return asked([&] { return PySet_Contains(object_.ptr(), object.ptr()); }) != 0;
}

std::vector<Text> HostPathSet::values() const {
  std::vector<Text> paths;
  walk([&](const Text& path) { paths.push_back(path); });
  return paths;
}

void HostPathSet::walk(const std::function<void(const Text&)>& visit) const {
  python::walk(object_, [&](const py::object& path) { visit(arena_->path(path)); });
}

void HostTestRecords::walk(const std::function<void(const TestRecord&)>& visit) const {
  python::walk(object_, [&](const py::object& record) { visit(HostTestRecord(*arena_, record)); });
}

std::optional<CallerSymbol> HostReference::caller_symbol() const {
  const py::object caller = attribute(object_, names::caller_symbol);
  if (!is_true(caller)) return std::nullopt;
  return CallerSymbol{caller_text(*arena_, caller, names::fqn), caller_text(*arena_, caller, names::kind),
                      caller_text(*arena_, caller, names::name)};
}

}  // namespace tarnwick::python
