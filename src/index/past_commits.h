// The past commits that an index knows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "words/vocabulary.h"

namespace tarnwick::index {

/// A file that a commit changed. Numbers are those of PastCommits::texts.
struct ChangedFile {
  std::uint32_t path = 0;            ///< it need not be in the tree any more
  std::vector<std::uint32_t> names;  ///< of the declarations that the commit touched there, as far as read
};

struct PastCommit {
  std::string hash;
  std::size_t files = 0;             ///< that it changed, below the root
  bool touched_read = false;         ///< whether it was read what it touched in its files
  std::vector<std::uint32_t> words;  ///< of its subject, as words::search_words gives them
  std::vector<ChangedFile> changed;  ///< its files
};

/// A commit that changed no file of the tree, or many, has no words and no files.
struct PastCommits {
  words::Vocabulary texts;          ///< words, paths and names
  std::vector<PastCommit> commits;  ///< newest first
};

}  // namespace tarnwick::index
