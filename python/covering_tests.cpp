#include "covering_tests.h"

#include <array>

#include "arguments.h"
#include "platform.h"

namespace tarnwick::python {
namespace {

/// What stands in the component's map for a path whose tests are in the host's.
constexpr char HELD_BY_HOST = '\0';

Text held_by_host() {
  return {std::string_view(&HELD_BY_HOST, 1), std::shared_ptr<const Text::Owner>()};
}

bool is_held_by_host(const std::vector<Text>& tests) {
  return tests.size() == 1 && tests.front().view().data() == &HELD_BY_HOST;
}

/// One call on a _CoveringTests: the component's lookup over the record's fields.
class LookUp {
 public:
  explicit LookUp(py::handle record)
      : record_(record),
        found_(attribute(record, names::found)),
        repository_(arena_, arena_.keep(attribute(record, names::repository))),
        tests_(repository_, to_integer(attribute(record, names::per_file), "per_file"),
               host_platform().logger) {
    tests_.failed = failed_before_ = is_true(attribute(record, names::failed));
  }

  void look_up(py::handle paths) {
    std::vector<OptionalText> wanted;
    walk(paths, [&](const py::object& path) { wanted.push_back(known_path(path)); });
    stored([&] { tests_.look_up(wanted); });
  }

  /// The very list that `found` holds.
  py::object of(const py::object& object) {
    const OptionalText path = known_path(object);
    const std::vector<Text>* tests = nullptr;
    stored([&] { tests = &tests_.of(path); });
    if (!path || tests_.found.find(*path) != tests) return checked(PyList_New(0));
    return checked(PyObject_GetItem(found_.ptr(), object.ptr()));
  }

 private:
  OptionalText known_path(const py::object& object) {
    OptionalText path = arena_.optional_path(object);
    if (has_text(path) && contains(found_, object)) tests_.found.set(*path, {held_by_host()});
    return path;
  }

  /// Runs `work` and stores what it found, also when it throws.
  template <class Work>
  void stored(Work work) {
    try {
      work();
    } catch (...) {
      store();
      throw;
    }
    store();
  }

  void store() const {
    for (const auto& [path, tests] : tests_.found.items()) {
      if (is_held_by_host(tests)) continue;
      const py::object list = to_list(tests, [](const Text& test) { return to_python(test); });
      checked(PyObject_SetItem(found_.ptr(), to_python(path).ptr(), list.ptr()));
    }
    if (tests_.failed && !failed_before_) {
      checked(PyObject_SetAttr(record_.ptr(), names::failed.object(), Py_True));
    }
  }

  Arena arena_;
  py::handle record_;
  py::object found_;
  HostRepository repository_;
  CoveringTests tests_;
  bool failed_before_ = false;
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
