// The arguments of the tool, typed.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "mcp/json.h"

namespace tarnwick::mcp {

/// Arguments, or what they name, are not what the action needs; the text lets a model correct itself. It may
/// quote a NUL, where `what()` ends.
class BadArguments : public std::invalid_argument {
 public:
  explicit BadArguments(const std::string& message) : std::invalid_argument(message), message_(message) {}

  const std::string& message() const noexcept { return message_; }

 private:
  std::string message_;
};

/// Builds the pack of a task.
struct TaskArguments {
  std::string task;
  std::int64_t token_budget = 0;
  std::optional<std::string> component_filter;
  bool include_snippets = false;
  std::vector<std::string> prefer_kinds;
  bool source_only = true;
  bool wide_match = false;
  std::vector<std::string> deep_fqns;
  std::optional<std::vector<std::string>> seed_symbols;
};

/// Shows one symbol in full.
struct SymbolArguments {
  std::string fqn;
  /// Which of several that bear the name; absent: the first.
  std::optional<std::string> file;
  std::optional<std::int64_t> line;
};

/// Tells what is indexed.
struct StatusArguments {};

struct Arguments {
  std::optional<std::string> repository;
  std::variant<TaskArguments, SymbolArguments, StatusArguments> action;
};

/// Reads the arguments of a call. Throws BadArguments.
Arguments read_arguments(const Input& json);

/// The schema that clients see: all actions in one object. An action's own takes its part of it.
const Json& input_schema();

}  // namespace tarnwick::mcp
