// What one call into the module lends to the component.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <new>
#include <utility>
#include <vector>

#include "strings.h"
#include "util/flat_map.h"

namespace tarnwick::python {

/// The host's own integers, handed back for their values.
class Integers {
 public:
  /// `object` must live as long as this; of equal ones the first is handed back.
  void remember(std::int64_t value, py::handle object) {
    objects_.try_emplace(static_cast<std::uint64_t>(value), object.ptr());
  }
  /// A new int for a value that was never remembered.
  py::object object(std::int64_t value) const {
    PyObject* known = objects_.find(static_cast<std::uint64_t>(value));
    return known != nullptr ? py::reinterpret_borrow<py::object>(known) : checked(PyLong_FromLongLong(value));
  }

 private:
  FlatMap<PyObject> objects_;
};

/// A block for the adapters of one build at a time, never freed. As the last thing on the heap the C library
/// would return it to the system after each build, and the next one would fetch it again, page by page. Taken
/// and put back with the interpreter lock held.
class SpareBlock {
 public:
  SpareBlock() : data_(std::exchange(spare(), nullptr)) {}
  SpareBlock(const SpareBlock&) = delete;
  SpareBlock& operator=(const SpareBlock&) = delete;
  ~SpareBlock() {
    if (data_ != nullptr) spare() = data_;
  }

  /// Null, and empty, while another has the block.
  std::byte* data() const { return data_; }
  std::size_t size() const { return data_ == nullptr ? 0 : SIZE; }

 private:
  static constexpr std::size_t SIZE = std::size_t{1} << 18U;  // twice what 500 symbols take

  static std::byte*& spare() {
    static auto* block = new std::byte[SIZE];
    return block;
  }

  std::byte* data_;
};

/// Owns the adapters of one call and the host's objects behind them: everything the component is handed lives
/// until the call has made its result.
///
/// A build makes thousands of small adapters and drops none before its end, so they come from one growing
/// block and the pointers handed out count nothing. Adapters own nothing either: what they refer to is kept
/// here, and they go with the block, undestroyed. Nothing of the component may outlive the arena of its call.
/// Used and destroyed with the interpreter lock held.
class Arena {
 public:
  Arena() = default;
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;
  ~Arena() {
    until_exit([&] {
      for (PyObject* object : kept_) Py_DECREF(object);
      return true;
    });
  }

  /// Keeps `object` alive as long as this.
  py::handle keep(py::object object) {
    kept_.push_back(object.ptr());
    return object.release();
  }

  template <class T, class... Arguments>
  T& make(Arguments&&... arguments) {
    return *new (memory_.allocate(sizeof(T), alignof(T))) T(std::forward<Arguments>(arguments)...);
  }

  /// Room for `count` objects, not yet made.
  template <class T>
  T* room(std::size_t count) {
    return static_cast<T*>(memory_.allocate(count * sizeof(T), alignof(T)));
  }

  /// An adapter of `object`, as the pointer that the component takes.
  template <class T>
  std::shared_ptr<const T> lend(py::object object) {
    return shared(make<T>(*this, keep(std::move(object))));
  }

  /// A pointer to what the arena holds.
  template <class T>
  static std::shared_ptr<const T> shared(const T& held) {
    return {std::shared_ptr<const T>(), &held};
  }

  Text text(py::object object) { return text_of(keep(std::move(object))); }
  /// As text; `object` must live as long as this.
  Text text_of(py::handle object) { return make_text(object, characters(object)).text(); }
  /// Absent for None.
  OptionalText optional_text(py::object object) {
    if (object.is_none()) return std::nullopt;
    return text(std::move(object));
  }

  /// The characters of `object`, for as long as this lives.
  std::string_view view(py::handle object) { return held(characters(object)); }

  /// Candidates share files, and the index their paths: one text for each str.
  const Text& path(py::handle object) {
    const auto key = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(object.ptr()));
    if (const HostText* known = paths_.find(key)) return known->text();
    const py::handle kept = keep(py::reinterpret_borrow<py::object>(object));
    HostText& text = make_text(kept, path_characters(kept));
    paths_.try_emplace(key, &text);
    return text.text();
  }
  OptionalText optional_path(py::handle object) {
    if (object.is_none()) return std::nullopt;
    return path(object);
  }

  Integers symbol_ids;
  Integers file_ids;
  Integers component_ids;
  /// Values of the caller that go on to a collaborator as they are; null where the component's own serve.
  py::object source_only;
  py::object include_tests;

 private:
  std::string_view held(Characters characters) {
    if (characters.held) keep(std::move(characters.held));
    return characters.view;
  }
  HostText& make_text(py::handle kept, Characters characters) {
    return make<HostText>(kept, held(std::move(characters)));
  }

  SpareBlock first_block_;
  std::pmr::monotonic_buffer_resource memory_{first_block_.data(), first_block_.size()};
  std::vector<PyObject*> kept_;
  FlatMap<HostText> paths_;
};

/// An object of the host as one of the component's interfaces. Owns nothing: `object` must live as long as
/// the arena, and the arena longer than this.
template <class Base>
class Adapter : public Base {
 public:
  Adapter(Arena& arena, py::handle object) : arena_(&arena), object_(object) {}
  py::handle object() const { return object_; }

 protected:
  Arena* arena_;
  py::handle object_;
};

}  // namespace tarnwick::python
