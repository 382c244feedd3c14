// Reports as JSON values: the one place that knows their keys.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "service/status.h"
#include "service/symbol.h"
#include "service/task.h"
#include "tarnwick/workers/context_pack.h"

namespace tarnwick::output {

/// The serialised pack. Texts that are no valid UTF-8 show U+FFFD, here and below. Not const, as the
/// serialised form shares the pack's sequences.
nlohmann::ordered_json to_json(ContextPack& pack);

/// The pack, with the remarks among its notes.
nlohmann::ordered_json to_json(service::TaskReport report);

/// An entry of a pack with "body", "references", "tests" and, where there are any, "others" and "notes".
nlohmann::ordered_json to_json(const service::SymbolReport& report);

nlohmann::ordered_json to_json(const service::StatusReport& report);

}  // namespace tarnwick::output
