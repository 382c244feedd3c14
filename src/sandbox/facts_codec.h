// The facts of a file as bytes.
#pragma once

#include <string>
#include <string_view>

#include "facts/facts.h"

namespace tarnwick::sandbox {

/// The bytes of `facts`; unpack_facts gives back equal ones.
std::string pack_facts(const facts::FileFacts& facts);

/// The facts in `bytes`, which are those of a file with that `text`. The bytes may come from a process that a
/// hostile file has taken over: whatever they are, the result holds only facts that some text may have, of a
/// size in proportion to the bytes and the text. That means positions inside the text and inside the lists,
/// in their order, and valid UTF-8. Throws MalformedMessage for all others.
facts::FileFacts unpack_facts(std::string_view bytes, std::string_view text);

}  // namespace tarnwick::sandbox
