// JSON Schema validation of arguments.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "mcp/json.h"

namespace tarnwick::mcp {

/// A compiled schema; keywords of draft 4, which the later drafts share. Safe to share between threads.
class Schema {
 public:
  explicit Schema(Json schema);
  Schema(const Schema&) = delete;
  Schema& operator=(const Schema&) = delete;
  ~Schema();

  /// What the first offending part of `value` must be instead, in a sentence that names it; nothing when the
  /// value is valid.
  std::optional<std::string> fault(const Input& value) const;

 private:
  struct Compiled;
  Json schema_;
  std::unique_ptr<Compiled> compiled_;
};

}  // namespace tarnwick::mcp
