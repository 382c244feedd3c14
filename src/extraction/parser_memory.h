// Where the parsing library takes its memory from.
#pragma once

namespace tarnwick::extraction {

/// From now on the library's allocations fail as those of operator new do: by the new-handler, and without
/// one by ending the process, where the library of itself prints a line first. Call before the first parse.
void fail_parsers_as_new();

}  // namespace tarnwick::extraction
