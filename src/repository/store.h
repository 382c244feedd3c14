// The repositories over the index of one directory.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>

#include "index/index.h"
#include "repository/stored_repository.h"

namespace tarnwick::repository {

/// Opens a StoredRepository for each build; those of one state share what was worked out of it. Cheap to
/// make. Thread rule: safe to share between threads; what it opens may outlive it.
class Store {
 public:
  /// `root` is where references' contexts are read.
  Store(std::filesystem::path index_file, std::filesystem::path root);

  index::Index& index() { return index_; }

  /// The index as it is now. Throws IndexError as Index::snapshot does.
  StoredRepository open();

 private:
  index::Index index_;
  std::filesystem::path root_;
  std::mutex mutex_;
  index::StateId state_;  ///< that `resolved_` is of
  std::shared_ptr<const resolution::Resolved> resolved_;
};

}  // namespace tarnwick::repository
