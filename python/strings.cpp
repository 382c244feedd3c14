#include "strings.h"

#include <typeinfo>
#include <utility>

namespace tarnwick::python {
namespace {

constexpr std::string_view OPAQUE = "\xEF\xB7\x90";  // U+FDD0, a non-character: no name or kind holds it

}  // namespace

py::object HostText::hold(py::object object) {
  object_ = std::move(object);
  if (PyUnicode_Check(object_.ptr()) != 0) return show_string(object_);
  show(asked([&] { return PyObject_IsTrue(object_.ptr()); }) != 0 ? OPAQUE : std::string_view());
  return {};
}

py::object HostText::hold_path(py::object path) {
  object_ = std::move(path);
  if (PyUnicode_Check(object_.ptr()) != 0) return show_string(object_);
  const py::object string = asked([&] { return PyOS_FSPath(object_.ptr()); });
  if (PyUnicode_Check(string.ptr()) == 0) {
    throw_new(PyExc_TypeError, "a path must be a str or an os.PathLike of one, not bytes");
  }
  const py::object bytes = show_string(string);
  return bytes ? bytes : string;
}

py::object HostText::show_string(py::handle string) {
  Py_ssize_t size = 0;
  if (const char* data = PyUnicode_AsUTF8AndSize(string.ptr(), &size)) {
    show({data, static_cast<std::size_t>(size)});
    return {};
  }
  PyErr_Clear();  // lone surrogates, most likely; anything else comes again
  py::object bytes = checked(PyUnicode_AsEncodedString(string.ptr(), "utf-8", SURROGATES));
  show({PyBytes_AS_STRING(bytes.ptr()), static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr()))});
  return bytes;
}

py::object to_python(const Text& text) {
  const Text::Owner* owner = text.owner().get();
  if (owner == nullptr || typeid(*owner) != typeid(HostText)) return to_python(text.view());
  const auto& host = static_cast<const HostText&>(*owner);
  return host.is_whole(text) ? host.object() : to_python(text.view());
}

py::object to_python(std::string_view text) {
  return checked(PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), SURROGATES));
}

py::object to_python(const OptionalText& text) {
  return text ? to_python(*text) : py::none();
}

}  // namespace tarnwick::python
