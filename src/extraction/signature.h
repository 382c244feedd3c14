// Signatures: a declaration as one line.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "extraction/raw_facts.h"

namespace tarnwick::extraction {

struct SignatureStyle {
  std::size_t max_bytes;
  bool lines_end_members = false;  ///< as Language says
};

/// The text of `range` on one line, without what `left_out` covers (comments and attributes, in order) and
/// without what only opens a body at its end. More than `style.max_bytes` are cut behind a whole token, and
/// "…" says so.
std::string signature_of(std::string_view text, Range range, std::span<const Attachment> left_out,
                         const SignatureStyle& style);

}  // namespace tarnwick::extraction
