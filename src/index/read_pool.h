// Connections for readers that come often.
#pragma once

#include <filesystem>
#include <memory>

#include "index/connection.h"

namespace tarnwick::index {

/// Keeps connections to one index file open between readers, with their prepared statements and their pages,
/// and what was worked out of the index's state for as long as it does not change. Notices when another file
/// takes the place of the index. Safe to share between threads.
class ReadPool {
 public:
  explicit ReadPool(std::filesystem::path index_file);

  /// A connection inside a read transaction, for one thread at a time; letting go of it ends the transaction.
  /// May outlive the pool. Throws IndexError as open_for_reading does.
  std::shared_ptr<Connection> take();

 private:
  class Shelf;
  std::shared_ptr<Shelf> shelf_;
};

}  // namespace tarnwick::index
