// Brings an index up to date with its tree.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "facts/extractor.h"
#include "index/index.h"

namespace tarnwick::indexing {

struct IndexOptions {
  std::filesystem::path root;                   ///< the directory to index
  index::Index* index = nullptr;                ///< required
  bool include_ignored = false;                 ///< index what ignore rules leave out, too
  bool full = false;                            ///< read every file again
  unsigned threads = 0;                         ///< that read files; 0: one for each core
  std::stop_token stop = {};                    ///< requested: stop soon and leave a usable index
  const facts::Extractor* extractor = nullptr;  ///< reads the files; required
};

/// Whether what a file of that path holds can be of consequence to an index.
bool may_matter(const facts::Extractor& extractor, std::string_view path);

/// Hears how an update goes on, on the thread that asked for it.
class Progress {
 public:
  Progress() = default;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  virtual ~Progress() = default;

  /// Called before the first file when any has to be read, and after each.
  virtual void files_done(std::int64_t done, std::int64_t total, std::string_view path) = 0;
  /// Something that the user should know, such as a damaged index that is rebuilt.
  virtual void message(std::string_view text) = 0;
};

struct IndexReport {
  bool first = false;        ///< there was no complete index before
  bool interrupted = false;  ///< stopped before the end: a first indexing goes on there the next time, a
                             ///< later update left the older state
  std::int64_t files = 0;    ///< in the tree, those left out included
  std::int64_t added = 0;
  std::int64_t changed = 0;
  std::int64_t removed = 0;
};

/// Makes the index of a directory hold its tree as it is now. Costs a `stat` for each unchanged file, and the
/// work of those that were added, changed or removed.
///
/// One process writes at a time; another waits for it and then finds little to do. A first indexing is
/// committed in batches, so that readers see the files done so far, each whole; a later update is one
/// transaction. An index of an older schema or a damaged one is rebuilt, with a message. `progress` may be
/// null. Throws index::IndexError, std::filesystem::filesystem_error (the root cannot be read), and what
/// `progress` throws.
IndexReport update_index(const IndexOptions& options, Progress* progress = nullptr);

}  // namespace tarnwick::indexing
