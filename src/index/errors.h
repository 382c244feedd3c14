// What can go wrong with an index file.
#pragma once

#include <stdexcept>
#include <string>

namespace tarnwick::index {

/// An error of the index file or of the folder it lies in; the message names the file or folder at fault.
class IndexError : public std::runtime_error {
 public:
  enum class Kind {
    damaged,     ///< the file is no index any more; IndexFile::set_aside and a new indexing help
    newer,       ///< the file was written by a newer release and is left alone
    foreign,     ///< the file is a database of something else and is left alone
    unwritable,  ///< the file or its folder cannot be written
    full,        ///< no space is left
    missing,     ///< there is no index yet
    other,
  };

  IndexError(Kind kind, const std::string& message) : std::runtime_error(message), kind_(kind) {}

  Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

}  // namespace tarnwick::index
