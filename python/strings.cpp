#include "strings.h"

#include <typeinfo>
#include <utility>

namespace tarnwick::python {
namespace {

constexpr std::string_view OPAQUE = "\xEF\xB7\x90";  // U+FDD0, a non-character: no name or kind holds it

}  // namespace

Characters encoded(py::handle string) {
  Py_ssize_t size = 0;
  if (const char* data = PyUnicode_AsUTF8AndSize(string.ptr(), &size)) {
    return {{data, static_cast<std::size_t>(size)}, {}};
  }
  PyErr_Clear();  // lone surrogates, most likely; anything else comes again
  py::object bytes = checked(PyUnicode_AsEncodedString(string.ptr(), "utf-8", SURROGATES));
  const std::string_view view(PyBytes_AS_STRING(bytes.ptr()),
                              static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr())));
  return {view, std::move(bytes)};
}

Characters opaque(py::handle object) {
  const bool is_true = asked([&] { return PyObject_IsTrue(object.ptr()); }) != 0;
  return {is_true ? OPAQUE : std::string_view(), {}};
}

/// As characters, for a path: a str or an os.PathLike. Throws TypeError for anything else.
Characters path_characters(py::handle path) {
  if (PyUnicode_Check(path.ptr()) != 0) return characters(path);
  py::object string = asked([&] { return PyOS_FSPath(path.ptr()); });
  if (PyUnicode_Check(string.ptr()) == 0) {
    throw_new(PyExc_TypeError, "a path must be a str or an os.PathLike of one, not bytes");
  }
  Characters found = characters(string);
  if (!found.held) found.held = std::move(string);
  return found;
}

py::object to_python(const Text& text) {
  const Text::Owner* owner = text.owner().get();
  if (owner == nullptr || typeid(*owner) != typeid(HostText)) return to_python(text.view());
  const auto& host = static_cast<const HostText&>(*owner);
  return host.is_whole(text) ? py::reinterpret_borrow<py::object>(host.object()) : to_python(text.view());
}

py::object to_python(std::string_view text) {
  return checked(PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), SURROGATES));
}

py::object to_python(const OptionalText& text) {
  return text ? to_python(*text) : py::none();
}

}  // namespace tarnwick::python
