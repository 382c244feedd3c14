// What the actions of the tool do.
#pragma once

#include <string>

#include "mcp/arguments.h"
#include "mcp/call.h"
#include "mcp/json.h"
#include "mcp/source.h"

namespace tarnwick::mcp {

/// The pack of a task, serialised. Throws BadArguments for a name that the repository lacks, Cancelled,
/// TimedOut, and errors of the index.
Json build_pack(Source& source, const TaskArguments& task, const Call& call);

/// One symbol in full: an entry of a pack with "body", "references" and "tests". Throws as build_pack.
Json show_symbol(Source& source, const SymbolArguments& symbol, const Call& call);

/// How far the index of a repository is, and what it holds.
Json show_status(Source& source, const Call& call);

}  // namespace tarnwick::mcp
