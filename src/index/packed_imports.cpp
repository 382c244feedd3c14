#include "index/packed_imports.h"

#include <set>
#include <utility>

#include "index/packed_numbers.h"

namespace tarnwick::index {

std::string pack(const std::vector<facts::Import>& imports) {
  std::string out;
  std::set<std::pair<std::string_view, std::string_view>> known;
  for (const facts::Import& import : imports) {
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

}  // namespace tarnwick::index
