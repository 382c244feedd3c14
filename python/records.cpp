#include "records.h"

#include <pybind11/eval.h>

#include <array>

#include "covering_tests.h"
#include "module.h"
#include "types.h"

namespace tarnwick::python {
namespace {

constexpr const char* PACK_DOC = "A token-budgeted context pack for a coding task.";
constexpr const char* RANKED_DOC = "A symbol with its relevance score for ranking.";

// Made once and kept: the process has one such module.
PyObject* context_pack_type = nullptr;
PyObject* ranked_symbol_type = nullptr;

PyObject* to_dict(PyObject* self, PyObject* /*unused*/) {
  return at_border([&] { return pack_dict(self); });
}

auto pack_methods = std::to_array<PyMethodDef>(
    {{"to_dict", to_dict, METH_NOARGS,
      "to_dict($self, /)\n--\n\n"
      "Return the pack as a new dict, in the order in which it is serialised as JSON.\n\n"
      "The keys are 'symbols', 'files', 'tests', 'recommendations', 'notes' (only when\n"
      "there is one), 'tokens_used', 'indexing_in_progress' and 'progress'. The lists are\n"
      "the pack's own: a change made through the dict changes the pack."}});

py::object new_row(const TestRow& row) {
  py::object dict = new_dict();
  set_item(dict, names::file, to_python(row.file));
  set_item(dict, names::for_, to_python(row.source));
  return dict;
}

/// Writes the keys that an entry has besides the fixed ones.
class AddedKeys {
 public:
  explicit AddedKeys(py::handle entry) : entry_(entry) {}

  template <class Value>
  void operator()(std::string_view key, const Value& value) const {
    const py::object object = [&]() -> py::object {
      if constexpr (std::is_same_v<Value, bool>) {
        return python_bool(value);
      } else if constexpr (std::is_same_v<Value, std::string>) {
        return to_python(std::string_view(value));
      } else {
        return to_python(value);
      }
    }();
    checked(PyDict_SetItem(entry_.ptr(), to_python(key).ptr(), object.ptr()));
  }

 private:
  py::handle entry_;
};

/// A dict with the keys that every entry has, to be copied: that makes the table once, in its size.
PyObject* entry_layout() {
  static PyObject* const layout = [] {
    py::object dict = new_dict();
    for (const Name* key : {&names::fqn, &names::name, &names::kind, &names::file, &names::line,
                            &names::signature, &names::docstring, &names::docstring_truncated}) {
      set_item(dict, *key, py::none());
    }
    return dict.release().ptr();
  }();
  return layout;
}

py::object new_entry(const Entry& entry) {
  py::object dict = checked(PyDict_Copy(entry_layout()));
  static_cast<const HostSymbol&>(*entry.symbol).fill_entry(dict, to_python(entry.file));
  entry.visit_added(AddedKeys(dict));
  return dict;
}

/// What an annotation stands for. Its text could not be resolved later: the module has no `Any`.
py::object evaluated(const char* annotation) {
  const py::dict scope;
  scope["Any"] = py::module_::import("typing").attr("Any");
  return py::eval(annotation, scope);
}

/// A field of a record: its name, its annotation, and its default as an object or a factory; null for none.
py::object field(const char* name, const char* annotation, const char* how, py::handle value) {
  const py::object make = py::module_::import("dataclasses").attr("field");
  const py::dict options;
  if (how != nullptr) options[how] = value;
  return py::make_tuple(name, evaluated(annotation), make(**options));
}

}  // namespace

void add_record_types(py::handle module) {
  const py::handle list(reinterpret_cast<PyObject*>(&PyList_Type));
  const py::handle dict(reinterpret_cast<PyObject*>(&PyDict_Type));
  const auto listed = [&](const char* name, const char* annotation) {
    return field(name, annotation, "default_factory", list);
  };
  const auto plain = [&](const char* name, const char* annotation, const py::object& value) {
    return field(name, annotation, "default", value);
  };
  const auto required = [&](const char* name, const char* annotation) {
    return field(name, annotation, nullptr, {});
  };

  py::list pack;
  pack.append(listed("symbols", "list[dict[str, Any]]"));
  pack.append(listed("files", "list[str]"));
  pack.append(listed("tests", "list[dict[str, str]]"));
  pack.append(listed("recommendations", "list[str]"));
  pack.append(listed("notes", "list[str]"));
  pack.append(plain("tokens_used", "int", py::int_(0)));
  pack.append(plain("indexing_in_progress", "bool", py::bool_(false)));
  pack.append(plain("progress", "int", py::int_(100)));
  context_pack_type = add_record_type(module, "ContextPack", PACK_DOC, pack, pack_methods);

  py::list ranked;
  ranked.append(required("symbol", "Any"));
  ranked.append(required("score", "float"));
  ranked.append(plain("file_path", "str | None", py::none()));
  ranked_symbol_type = add_record_type(module, "RankedSymbol", RANKED_DOC, ranked, {});

  py::list covering;
  covering.append(required("repository", "Any"));
  covering.append(required("per_file", "int"));
  covering.append(field("found", "dict[str, list[str]]", "default_factory", dict));
  covering.append(plain("failed", "bool", py::bool_(false)));
  add_record_type(module, "_CoveringTests", COVERING_TESTS_DOC, covering, covering_tests_methods());
}

py::object to_python(const ContextPack& pack) {
  const py::object symbols = to_list(pack.symbols, new_entry);
  const py::object files = to_python(pack.files);
  const py::object tests = to_list(pack.tests, new_row);
  const py::object recommendations = to_python(pack.recommendations);
  const py::object notes = to_python(pack.notes);
  const py::object tokens_used = checked(PyLong_FromLongLong(pack.tokens_used));
  return checked(PyObject_CallFunctionObjArgs(context_pack_type, symbols.ptr(), files.ptr(), tests.ptr(),
                                              recommendations.ptr(), notes.ptr(), tokens_used.ptr(),
                                              nullptr));
}

py::object to_python(const std::vector<RankedSymbol>& ranked) {
  return to_list(ranked, [](const RankedSymbol& item) {
    const py::object score = checked(PyFloat_FromDouble(item.score));
    return checked(PyObject_CallFunctionObjArgs(ranked_symbol_type, host_object(item.symbol).ptr(),
                                                score.ptr(), to_python(item.file_path).ptr(), nullptr));
  });
}

py::object to_python(const std::vector<Parameter>& parameters) {
  return to_list(parameters, [](const Parameter& parameter) {
    py::object dict = new_dict();
    set_item(dict, names::name, to_python(std::string_view(parameter.name)));
    set_item(dict, names::description, to_python(std::string_view(parameter.description)));
    if (parameter.type) set_item(dict, names::type, to_python(std::string_view(*parameter.type)));
    return dict;
  });
}

py::object to_python(const std::vector<RelatedSymbol>& related) {
  return to_list(related, [](const RelatedSymbol& symbol) {
    py::object dict = new_dict();
    set_item(dict, names::fqn, to_python(symbol.fqn));
    set_item(dict, names::kind, to_python(symbol.kind));
    return dict;
  });
}

py::object to_python(const std::vector<Text>& texts) {
  return to_list(texts, [](const Text& text) { return to_python(text); });
}

py::object to_python(const std::vector<ContextBuilder::CostedRow>& rows) {
  return to_list(rows, [](const ContextBuilder::CostedRow& costed) {
    const py::object cost = checked(PyLong_FromLongLong(costed.cost));
    return checked(PyTuple_Pack(2, new_row(costed.row).ptr(), cost.ptr()));
  });
}

py::object pack_dict(py::handle pack) {
  // The component says which keys there are and in which order; the values are the host's.
  ContextPack layout;
  if (is_true(attribute(pack, names::notes))) layout.notes.emplace_back();
  py::object dict = new_dict();
  layout.visit([&](std::string_view key, const auto& /*value*/) {
    const py::object name = to_python(key);
    const py::object item = checked(PyObject_GetAttr(pack.ptr(), name.ptr()));
    checked(PyDict_SetItem(dict.ptr(), name.ptr(), item.ptr()));
  });
  return dict;
}

}  // namespace tarnwick::python
