// The embedded index as a view.
#pragma once

#include <memory>

#include "mcp/call.h"
#include "mcp/source.h"
#include "repository/store.h"

namespace tarnwick::mcp {

/// The index as it is now; empty as long as there is none. Queries end with an IndexError once
/// `call`, which must outlive the view, is over. Throws IndexError.
std::unique_ptr<View> open_view(repository::Store& store, const Call& call);

}  // namespace tarnwick::mcp
