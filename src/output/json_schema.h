// The schema of the reports as JSON values.
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace tarnwick::output {

/// Of a pack, of a symbol, or of the status of several repositories under "repositories".
nlohmann::ordered_json report_schema();

}  // namespace tarnwick::output
