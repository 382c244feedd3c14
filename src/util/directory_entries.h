// Listing a directory that may fail or change meanwhile.
#pragma once

#include <filesystem>
#include <system_error>
#include <vector>

namespace tarnwick::util {

/// The entries of a directory, in the order of the system. When it cannot be read, or not to its end, `error`
/// says why and those read so far are answered; a range-based loop over the iterator would throw instead.
inline std::vector<std::filesystem::directory_entry> entries_of(const std::filesystem::path& directory,
                                                                std::error_code& error) {
  std::vector<std::filesystem::directory_entry> entries;
  std::filesystem::directory_iterator next(directory, error);
  for (; !error && next != std::filesystem::directory_iterator(); next.increment(error)) {
    entries.push_back(*next);
  }
  return entries;
}

}  // namespace tarnwick::util
