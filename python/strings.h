// Python's strings as the component's texts, and back.
#pragma once

#include <memory>
#include <string_view>

#include "errors.h"
#include "tarnwick/text.h"

namespace tarnwick::python {

/// How lone surrogates cross: as three bytes each.
inline constexpr const char* SURROGATES = "surrogatepass";

/// The characters of a host's object.
struct Characters {
  std::string_view view;
  py::object held;  ///< what must be kept alive for the view besides the object; mostly null
};

Characters encoded(py::handle string);
Characters opaque(py::handle object);
Characters path_characters(py::handle path);

/// The characters of a str, without a copy where Python has them in UTF-8. Any other object passes through
/// unread: no characters when it is false, one character that no text has when it is true.
inline Characters characters(py::handle object) {
  PyObject* string = object.ptr();
  if (PyUnicode_Check(string) == 0) return opaque(object);
  if (PyUnicode_IS_COMPACT_ASCII(string)) {
    const auto* data = reinterpret_cast<const char*>(PyUnicode_1BYTE_DATA(string));
    return {{data, static_cast<std::size_t>(PyUnicode_GET_LENGTH(string))}, {}};
  }
  return encoded(object);
}

/// A host's object that stands for a text, so that the text comes back as that very object. Owns neither the
/// object nor the characters; both, and this, must outlive the texts.
class HostText final : public Text::Owner {
 public:
  HostText(py::handle object, std::string_view view)
      : object_(object), text_(view, std::shared_ptr<const Owner>(std::shared_ptr<const Owner>(), this)) {}

  const Text& text() const { return text_; }
  py::handle object() const { return object_; }
  /// Whether `view` is all of the text, not a part of it.
  bool is_whole(std::string_view view) const {
    return view.data() == text_.view().data() && view.size() == text_.view().size();
  }

 private:
  py::handle object_;
  Text text_;
};

/// The host's object behind `text`, or a new str.
py::object to_python(const Text& text);
py::object to_python(std::string_view text);
/// None when absent.
py::object to_python(const OptionalText& text);

}  // namespace tarnwick::python
