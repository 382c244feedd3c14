// Which files an index leaves out, and why.
#pragma once

#include <string_view>

namespace tarnwick::indexing::skips {

/// Reasons, as status shows them.
inline constexpr std::string_view SYMLINK = "symbolic link";
inline constexpr std::string_view TOO_LARGE = "too large";
inline constexpr std::string_view BINARY = "binary";
inline constexpr std::string_view MINIFIED = "minified";
inline constexpr std::string_view GENERATED = "generated";
inline constexpr std::string_view VENDORED = "vendored";
inline constexpr std::string_view UNREADABLE = "unreadable";
inline constexpr std::string_view NOT_REGULAR = "not a regular file";
inline constexpr std::string_view OF_THE_KERNEL = "the kernel's own";
inline constexpr std::string_view TOO_DEEP = "repositories nested too deep";
inline constexpr std::string_view UNSUPPORTED = "unsupported type";

/// Whether a directory of that name holds other people's code.
bool is_vendored_directory(std::string_view name);

/// VENDORED, MINIFIED or GENERATED when the path says so, else empty.
std::string_view by_path(std::string_view path);

/// BINARY, MINIFIED or GENERATED when the content says so, else empty. `bytes` as they are on disk, `text`
/// decoded.
std::string_view by_content(std::string_view bytes, std::string_view text);

}  // namespace tarnwick::indexing::skips
