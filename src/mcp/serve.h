// Serves one client over two descriptors.
#pragma once

#include "mcp/server.h"

namespace tarnwick::mcp {

/// Answers what comes in at `input` on `output` until the input ends or the other side is gone. Neither
/// descriptor is owned; nobody else may write to `output` meanwhile. A broken pipe must not end the process.
void serve(int input, int output, const Tool& tool, const ServerOptions& options);

}  // namespace tarnwick::mcp
