// The uses of names, as the index holds them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "storage/connection.h"
#include "storage/schema.h"

namespace tarnwick::storage {

struct StoredUse {
  std::int64_t id = 0;  ///< symbol_id of its file and its position among the file's uses, from 1
  std::int64_t name_id = 0;
  std::string qualifier;
  std::int64_t type = 0;  ///< position in USE_TYPES
  std::int64_t line = 0;
  std::int64_t count = 0;
  std::int64_t caller = 0;  ///< id of the innermost symbol that holds it; 0 outside of all
  bool is_test = false;

  std::int64_t file() const { return file_of(id); }
};

/// The uses of the names that those symbols bear, by id; of files whose `is_test` is between the two.
std::vector<StoredUse> uses_of_names(Connection& connection, const std::vector<std::int64_t>& symbol_ids,
                                     bool tests_from, bool tests_to);

/// The uses inside those symbols, by id.
std::vector<StoredUse> uses_within(Connection& connection, const std::vector<std::int64_t>& symbol_ids);

}  // namespace tarnwick::storage
