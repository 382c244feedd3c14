#include "storage/packed_imports.h"

#include <set>
#include <utility>

#include "storage/packed_numbers.h"

namespace tarnwick::storage {

std::string pack(const std::vector<indexing::Import>& imports) {
  std::string out;
  std::set<std::pair<std::string_view, std::string_view>> known;
  for (const indexing::Import& import : imports) {
    if (!known.emplace(import.module, import.name).second) continue;
    put(out, import.module);
    put(out, import.name);
  }
  return out;
}

std::vector<StoredImport> unpack_imports(std::string_view packed) {
  std::vector<StoredImport> imports;
  for (PackedInput input(packed); !input.empty();) {
    const std::string_view module = input.text();
    imports.push_back({module, input.text()});
  }
  return imports;
}

}  // namespace tarnwick::storage
