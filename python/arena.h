// What one call into the module lends to the component.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <new>
#include <unordered_map>
#include <utility>
#include <vector>

#include "strings.h"

namespace tarnwick::python {

/// The host's own integers, for handing back what is no plain int (a bool, a subclass).
class Integers {
 public:
  void remember(std::int64_t value, const py::object& object) {
    if (PyLong_CheckExact(object.ptr()) == 0) objects_.try_emplace(value, object);
  }
  py::object object(std::int64_t value) const {
    if (!objects_.empty()) {
      if (const auto known = objects_.find(value); known != objects_.end()) return known->second;
    }
    return checked(PyLong_FromLongLong(value));
  }

 private:
  std::unordered_map<std::int64_t, py::object> objects_;
};

/// Owns the adapters of one call: everything the component is handed lives until the call has made its
/// result.
///
/// A build makes thousands of small adapters and drops none before its end, so they come from one growing
/// block, and the pointers handed out count nothing. Nothing of the component may outlive the arena of its
/// call. Used and destroyed with the interpreter lock held.
class Arena {
 public:
  Arena() = default;
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;
  ~Arena() {
    for (const Adapter& adapter : adapters_) adapter.destroy(adapter.object);
  }

  template <class T, class... Arguments>
  T& make(Arguments&&... arguments) {
    T* object = new (memory_.allocate(sizeof(T), alignof(T))) T(std::forward<Arguments>(arguments)...);
    adapters_.push_back({object, [](void* made) { static_cast<T*>(made)->~T(); }});
    return *object;
  }

  /// As make, as the pointers that the component takes.
  template <class T, class... Arguments>
  std::shared_ptr<const T> lend(Arguments&&... arguments) {
    return {std::shared_ptr<const T>(), &make<T>(std::forward<Arguments>(arguments)...)};
  }

  /// Holds `object` in `text` for the length of the call.
  const Text& hold(HostText& text, py::object object) {
    keep(text.hold(std::move(object)));
    return text.text();
  }
  Text text(py::object object) { return hold(make<HostText>(), std::move(object)); }
  Text path(py::object object) {
    auto& text = make<HostText>();
    keep(text.hold_path(std::move(object)));
    return text.text();
  }
  /// Absent for None.
  OptionalText optional_text(py::object object) {
    if (object.is_none()) return std::nullopt;
    return text(std::move(object));
  }
  OptionalText optional_path(py::object object) {
    if (object.is_none()) return std::nullopt;
    return path(std::move(object));
  }

  Integers symbol_ids;
  Integers file_ids;
  Integers component_ids;
  /// Values of the caller that go on to a collaborator as they are; null where the component's own serve.
  py::object source_only;
  py::object include_tests;

 private:
  void keep(py::object object) {
    if (object) kept_.push_back(std::move(object));
  }

  struct Adapter {
    void* object;
    void (*destroy)(void*);
  };
  static constexpr std::size_t FIRST_BLOCK = 4096;

  alignas(std::max_align_t) std::array<std::byte, FIRST_BLOCK> first_block_;
  std::pmr::monotonic_buffer_resource memory_{first_block_.data(), first_block_.size()};
  std::vector<Adapter> adapters_;
  std::vector<py::object> kept_;
};

}  // namespace tarnwick::python
