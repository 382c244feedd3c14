// What a file imports, packed into one value.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "indexing/records.h"

namespace tarnwick::storage {

/// indexing::Import as it is stored: views into the packed bytes.
struct StoredImport {
  std::string_view module, name;
};

std::string pack(const std::vector<indexing::Import>& imports);

/// The packed imports in their order, each once. The bytes must outlive them. Throws IndexError (damaged) for
/// other bytes.
std::vector<StoredImport> unpack_imports(std::string_view packed);

}  // namespace tarnwick::storage
