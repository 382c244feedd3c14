// Packs as JSON values, for whoever sends them on inside something else.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "tarnwick/workers/context_pack.h"

namespace tarnwick::output {

/// The serialised pack.
nlohmann::ordered_json to_json(const ContextPack& pack);

/// One entry as it stands in a serialised pack.
nlohmann::ordered_json to_json(const Entry& entry);

/// A text; what is no valid UTF-8 becomes U+FFFD.
nlohmann::ordered_json to_json(const OptionalText& text);

}  // namespace tarnwick::output
