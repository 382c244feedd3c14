// Text of a collaborator or a caller, shared instead of copied.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tarnwick/interface.h"

namespace tarnwick {

/// An immutable UTF-8 text together with whatever keeps its characters alive.
///
/// Copies share the characters. A host whose strings are objects derives from Owner, so that a text that went
/// through a build comes back as the very object it came from. Lone surrogates of a host are allowed, as
/// three bytes each; an embedded NUL is a character like any other. Comparison is by content.
///
/// Thread rule: a Text may be read from several threads; an Owner must be safe to destroy on any of them.
class Text {
 public:
  /// Keeps the characters of a text alive; destroyed with the last text that refers to it.
  class Owner : public Interface {};

  Text() = default;
  // A text is a string wherever one is asked for.
  // NOLINTBEGIN(google-explicit-constructor)
  Text(std::string text);
  Text(std::string_view text);
  Text(const char* text) : Text(std::string_view(text)) {}
  // NOLINTEND(google-explicit-constructor)
  /// Refers to `view` without a copy; `owner` keeps it alive and is not null.
  Text(std::string_view view, std::shared_ptr<const Owner> owner) : view_(view), owner_(std::move(owner)) {}

  /// The characters; valid as long as any copy of this text lives.
  std::string_view view() const noexcept { return view_; }
  operator std::string_view() const noexcept { return view_; }  // NOLINT(google-explicit-constructor)
  bool empty() const noexcept { return view_.empty(); }
  /// Null for an empty text made without an owner.
  const std::shared_ptr<const Owner>& owner() const noexcept { return owner_; }

  friend bool operator==(const Text& a, const Text& b) noexcept { return a.view_ == b.view_; }
  friend bool operator==(const Text& a, std::string_view b) noexcept { return a.view_ == b; }
  friend bool operator==(const Text& a, const char* b) noexcept { return a.view_ == b; }

 private:
  std::string_view view_;
  std::shared_ptr<const Owner> owner_;
};

using OptionalText = std::optional<Text>;

/// Whether a text is there and has at least one character.
inline bool has_text(const OptionalText& text) {
  return text && !text->empty();
}

/// Hash for containers keyed by Text that are also searched by std::string_view.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
};

/// Equality to go with TextHash.
struct TextEqual {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const noexcept { return a == b; }
};

}  // namespace tarnwick
