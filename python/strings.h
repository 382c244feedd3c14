// Python's strings as the component's texts, and back.
#pragma once

#include <memory>
#include <string_view>

#include "errors.h"
#include "tarnwick/text.h"

namespace tarnwick::python {

/// How lone surrogates cross: as three bytes each.
inline constexpr const char* SURROGATES = "surrogatepass";

/// A host's object that stands for a text, so that the text comes back as that very object. The texts it
/// gives share nothing with it but its address: it must outlive them.
class HostText final : public Text::Owner {
 public:
  /// Takes a str as its characters, without a copy where Python already has them in UTF-8. Any other object
  /// passes through unread: no characters when it is false, one character that no text has when it is true.
  /// Returns what must be kept alive besides the object; mostly null.
  py::object hold(py::object object);
  /// As hold, for a path: a str or an os.PathLike. Throws TypeError for anything else.
  py::object hold_path(py::object path);

  const Text& text() const { return text_; }
  /// Null before anything was held.
  const py::object& object() const { return object_; }
  /// Whether `view` is all of the text, not a part of it.
  bool is_whole(std::string_view view) const {
    return view.data() == text_.view().data() && view.size() == text_.view().size();
  }

 private:
  void show(std::string_view view) {
    text_ = Text(view, std::shared_ptr<const Owner>(std::shared_ptr<const Owner>(), this));
  }
  /// Shows the characters of a str; returns where they are if not in the str.
  py::object show_string(py::handle string);

  py::object object_;
  Text text_;
};

/// The host's object behind `text`, or a new str.
py::object to_python(const Text& text);
py::object to_python(std::string_view text);
/// None when absent.
py::object to_python(const OptionalText& text);

}  // namespace tarnwick::python
