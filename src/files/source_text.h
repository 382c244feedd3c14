// Source files as the index counts their lines.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick::files {

/// Files above this many bytes are not indexed.
inline constexpr std::size_t MAX_FILE_SIZE = std::size_t{1} << 20;

/// Where the file of a repository path lies.
std::filesystem::path source_path(const std::filesystem::path& root, std::string_view path);

/// A file that was read whole, or why it was not.
struct FileBytes {
  int error = 0;  ///< of errno; EFBIG above MAX_FILE_SIZE, EINVAL for what is no regular file, 0 when read
  struct ::stat status = {};  ///< of the very file that was read
  std::string bytes;
};

/// Reads a regular file; symbolic links are not followed.
FileBytes read_regular_file(const std::filesystem::path& file);

/// The text of a source file's bytes, folded: UTF-8, or UTF-16 when a byte-order mark says so, everything
/// undecodable replaced, line ends made LF.
std::string decode_source(std::string_view bytes);

/// Line `number` (from 1) of a file, without its end; nothing when there is no such line or the file cannot
/// be read.
std::optional<std::string> read_line(const std::filesystem::path& file, std::int64_t number);

}  // namespace tarnwick::files
