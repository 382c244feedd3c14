// Lone surrogates: how undecodable bytes of paths travel through text.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::text {

/// The text of an operating system's bytes: each byte that is not part of valid UTF-8 becomes a lone
/// surrogate, U+DC80 to U+DCFF, itself three bytes. to_os reverses it exactly.
std::string from_os(std::string_view bytes);

/// The bytes that a path's text stands for.
std::string to_os(std::string_view text);

/// `text` as valid UTF-8 of the same length: each lone surrogate becomes a non-character, which no pattern
/// class of letters, digits or white space holds; a byte that fits nowhere becomes a control character.
std::string mask_surrogates(std::string_view text);

/// `text` as valid UTF-8 for whoever reads it: each lone surrogate becomes one U+FFFD.
std::string replace_surrogates(std::string_view text);

}  // namespace tarnwick::text
