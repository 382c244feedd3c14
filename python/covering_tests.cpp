#include "covering_tests.h"

#include <array>

#include "arguments.h"
#include "platform.h"
#include "records.h"

namespace tarnwick::python {
namespace {

/// The component's lookup over a record's fields. What it finds is in the record's `found` at once: code of
/// the host that runs meanwhile may look there, and an error on the way leaves what was found before.
class RecordTests final : public CoveringTests {
 public:
  RecordTests(const Repository& index, py::handle record, py::handle found_by_host)
      : CoveringTests(index, to_integer(attribute(record, names::per_file), "per_file"),
                      host_platform().logger),
        found_by_host_(found_by_host) {
    failed = is_true(attribute(record, names::failed));
  }

  /// As text; `path` is not asked about when it is in the record's `found`.
  OptionalText wanted(Arena& arena, const py::object& path) {
    OptionalText text = arena.optional_path(path);
    if (has_text(text) && contains(found_by_host_, path)) found.set(*text, {});
    return text;
  }

 private:
  void keep(const Text& path, std::vector<Text> tests) override {
    const py::object list = to_python(tests);
    asked([&] { return PyObject_SetItem(found_by_host_.ptr(), to_python(path).ptr(), list.ptr()); });
    CoveringTests::keep(path, std::move(tests));
  }

  py::handle found_by_host_;
};

/// One call on a _CoveringTests.
class LookUp {
 public:
  explicit LookUp(py::handle record)
      : record_(record),
        found_(attribute(record, names::found)),
        repository_(arena_, arena_.keep(attribute(record, names::repository))),
        tests_(repository_, record, found_) {}

  void look_up(py::handle paths) {
    std::vector<OptionalText> wanted;
    walk(paths, [&](const py::object& path) { wanted.push_back(tests_.wanted(arena_, path)); });
    const bool failed_before = tests_.failed;
    tests_.look_up(wanted);
    if (tests_.failed && !failed_before) {
      checked(PyObject_SetAttr(record_.ptr(), names::failed.object(), Py_True));
    }
  }

  /// The very list that `found` holds.
  py::object of(const py::object& path) {
    if (!is_true(path)) return new_list();
    look_up(checked(PyTuple_Pack(1, path.ptr())));
    if (tests_.failed || !contains(found_, path)) return new_list();
    return asked([&] { return PyObject_GetItem(found_.ptr(), path.ptr()); });
  }

 private:
  static py::object new_list() { return checked(PyList_New(0)); }

  Arena arena_;
  py::handle record_;
  py::object found_;
  HostRepository repository_;
  RecordTests tests_;
};

PyObject* look_up(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* paths = nullptr;
    parse(arguments, keywords, "O:look_up", {"paths"}, &paths);
    LookUp(self).look_up(paths);
    return py::none();
  });
}

PyObject* of(PyObject* self, PyObject* arguments, PyObject* keywords) {
  return at_border([&] {
    PyObject* path = nullptr;
    parse(arguments, keywords, "O:of", {"path"}, &path);
    return LookUp(self).of(py::reinterpret_borrow<py::object>(path));
  });
}

auto methods = std::to_array<PyMethodDef>(
    {{"look_up", keyword_function(look_up), METH_VARARGS | METH_KEYWORDS,
      "look_up($self, /, paths)\n--\n\n"
      "Find the tests of the source files among `paths` that were not looked up yet, in one query.\n\n"
      "paths: repository paths; None and '' are passed over.\n\n"
      "The answers land in `found`. An error of the index is logged and sets `failed`; errors of the\n"
      "records that it answers are raised."},
     {"of", keyword_function(of), METH_VARARGS | METH_KEYWORDS,
      "of($self, /, path)\n--\n\n"
      "Return the tests of one file, best first: the list that `found` holds.\n\n"
      "path: a repository path, looked up if it was not; None and '' have no tests.\n\n"
      "The list is empty for a test file, and for every file once a lookup has failed."}});

}  // namespace

std::span<PyMethodDef> covering_tests_methods() {
  return methods;
}

const std::vector<Text>& HostTests::of(const OptionalText& path) {
  answer_.clear();
  walk(call_method(object_, names::of, to_python(path)),
       [&](const py::object& test) { answer_.push_back(arena_->path(test)); });
  return answer_;
}

}  // namespace tarnwick::python
