// The embedded index as a view.
#pragma once

#include <filesystem>
#include <memory>

#include "index/read_pool.h"
#include "mcp/call.h"
#include "mcp/source.h"

namespace tarnwick::mcp {

/// The index of `root` as it is now; empty as long as there is none. Queries end with an IndexError once
/// `call`, which must outlive the view, is over. Throws IndexError.
std::unique_ptr<View> open_view(index::ReadPool& pool, const std::filesystem::path& root, const Call& call);

}  // namespace tarnwick::mcp
