// The extractor that reads the languages of languages.h.
#pragma once

#include "indexing/indexer.h"

namespace tarnwick::indexing {

/// Reads every language that the index knows. The one instance lives as long as the process; safe to call
/// from several threads.
const Extractor& language_extractor();

}  // namespace tarnwick::indexing
