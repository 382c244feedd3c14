// What a file imports, packed into one value.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "facts/facts.h"

namespace tarnwick::index {

/// indexing::Import as it is stored: views into the packed bytes.
struct StoredImport {
  std::string_view module, name;
};

std::string pack(const std::vector<facts::Import>& imports);

/// The packed imports in their order, each once. The bytes must outlive them. Throws IndexError (damaged) for
/// other bytes.
std::vector<StoredImport> unpack_imports(std::string_view packed);

}  // namespace tarnwick::index
