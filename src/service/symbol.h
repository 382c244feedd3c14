// One symbol in full.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "service/requests.h"
#include "service/view.h"
#include "tarnwick/workers/context_pack.h"

namespace tarnwick::service {

/// Another symbol of the same qualified name.
struct Namesake {
  Text kind;
  std::string path;  ///< valid UTF-8; empty when unknown
  std::int64_t line = 0;
};

struct SymbolReport {
  ContextPack pack;       ///< of the symbol alone, without its code
  std::string body;       ///< whole lines of its code
  bool body_cut = false;  ///< the code is longer
  References references;  ///< the first of the total
  std::vector<Namesake> others;
  Indexing indexing;
};

/// Throws UnknownName, and errors of the index.
SymbolReport show_symbol(const SymbolRequest& request, const Session& session);

}  // namespace tarnwick::service
