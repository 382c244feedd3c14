// Attribute and method names, interned so that a look-up compares pointers.
#pragma once

#include <pybind11/pybind11.h>

namespace tarnwick::python {

/// A name that becomes a Python string when it is first used, and stays one until the process ends.
class Name {
 public:
  explicit constexpr Name(const char* text) : text_(text) {}

  const char* text() const { return text_; }
  PyObject* object() const {
    if (object_ == nullptr) object_ = PyUnicode_InternFromString(text_);
    return object_;
  }

 private:
  const char* text_;
  mutable PyObject* object_ = nullptr;
};

namespace names {

inline constinit Name alone("alone");
inline constinit Name caller_symbol("caller_symbol");
inline constinit Name context("context");
inline constinit Name description("description");
inline constinit Name docstring("docstring");
inline constinit Name docstring_truncated("docstring_truncated");
inline constinit Name end_line("end_line");
inline constinit Name exc_info("exc_info");
inline constinit Name failed("failed");
inline constinit Name file("file");
inline constinit Name file_id("file_id");
inline constinit Name file_path("file_path");
inline constinit Name find_covering_tests("find_covering_tests");
inline constinit Name for_("for");
inline constinit Name found("found");
inline constinit Name fqn("fqn");
inline constinit Name get("get");
inline constinit Name get_component_by_name("get_component_by_name");
inline constinit Name get_file_paths_batch("get_file_paths_batch");
inline constinit Name get_files_by_component("get_files_by_component");
inline constinit Name get_references("get_references");
inline constinit Name get_symbol_by_fqn("get_symbol_by_fqn");
inline constinit Name get_symbols_by_file("get_symbols_by_file");
inline constinit Name hits("hits");
inline constinit Name id("id");
inline constinit Name include_tests("include_tests");
inline constinit Name indexing_in_progress("_indexing_in_progress");
inline constinit Name indexing_progress("_indexing_progress");
inline constinit Name is_export("is_export");
inline constinit Name is_test_query("is_test_query");
inline constinit Name items("items");
inline constinit Name kind("kind");
inline constinit Name limit("limit");
inline constinit Name line("line");
inline constinit Name list_tests("list_tests");
inline constinit Name logger("logger");
inline constinit Name name("name");
inline constinit Name note("note");
inline constinit Name notes("notes");
inline constinit Name of("of");
inline constinit Name path("path");
inline constinit Name per_file("per_file");
inline constinit Name production_fan_in("production_fan_in");
inline constinit Name query_names("query_names");
inline constinit Name query_terms("query_terms");
inline constinit Name rank("rank");
inline constinit Name repository("repository");
inline constinit Name retrieve("retrieve");
inline constinit Name retriever("retriever");
inline constinit Name score("score");
inline constinit Name search_symbols("search_symbols");
inline constinit Name signature("signature");
inline constinit Name source_only("source_only");
inline constinit Name start_line("start_line");
inline constinit Name symbol("symbol");
inline constinit Name symbols_with_paths("symbols_with_paths");
inline constinit Name test_paths("test_paths");
inline constinit Name token_count("token_count");
inline constinit Name type("type");
inline constinit Name usage_type("usage_type");
inline constinit Name values("values");
inline constinit Name warning("warning");

}  // namespace names

}  // namespace tarnwick::python
