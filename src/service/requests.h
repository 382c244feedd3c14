// What the program can be asked, and the fields of each request.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "service/field.h"

namespace tarnwick::service {

/// The pack of a task. Texts may hold lone surrogates, as paths do (text/surrogates.h).
struct TaskRequest {
  std::string task;
  std::int64_t budget = 2000;            ///< tokens
  std::optional<std::string> component;  ///< absent or empty: all
  bool snippets = false;
  std::vector<std::string> deep;  ///< qualified names
  std::vector<std::string> prefer;
  std::optional<std::vector<std::string>> seed;  ///< an empty list: matches by name alone
  bool wide = false;
  bool all_files = false;
  bool no_tests = false;
};

/// One symbol in full.
struct SymbolRequest {
  std::string fqn;
  std::optional<std::string> file;
  std::optional<std::int64_t> line;
};

/// What is indexed.
struct StatusRequest {};

/// The fields of `request`, which must outlive them, in the order of help texts.
std::vector<Field> fields_of(TaskRequest& request);
std::vector<Field> fields_of(SymbolRequest& request);
std::vector<Field> fields_of(StatusRequest& request);

}  // namespace tarnwick::service
