#include "service/deep_symbols.h"

#include <algorithm>

#include "text/surrogates.h"

namespace tarnwick::service {

void ask_for_bodies(const std::vector<Text>& fqns, BuildOptions& options) {
  for (const Text& fqn : fqns) options.deep_fqns.insert(fqn);
  if (!fqns.empty()) options.include_snippets = true;
}

std::vector<std::string> missing_bodies(const Repository& repository, const std::vector<Text>& fqns,
                                        const ContextPack& pack) {
  std::vector<std::string> missing;
  for (const Text& fqn : fqns) {
    const bool shown = std::any_of(pack.symbols.begin(), pack.symbols.end(), [&](const Entry& entry) {
      return entry.symbol->fqn().view() == fqn.view();
    });
    if (shown) continue;
    const std::string name = text::replace_surrogates(fqn);
    missing.push_back(repository.get_symbol_by_fqn(fqn)
                          ? name + " is not in the pack; named as a seed, it leads one"
                          : "unknown symbol " + name);
  }
  return missing;
}

}  // namespace tarnwick::service
