// The schema of structured results.
#pragma once

#include "mcp/json.h"

namespace tarnwick::mcp {

/// One of the three actions' results.
Json output_schema();

}  // namespace tarnwick::mcp
