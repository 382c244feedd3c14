#include "repository/store.h"

#include <utility>

namespace tarnwick::repository {

Store::Store(std::filesystem::path index_file, std::filesystem::path root)
    : index_(std::move(index_file)), root_(std::move(root)) {}

StoredRepository Store::open() {
  std::unique_ptr<index::Snapshot> snapshot = index_.snapshot();
  std::shared_ptr<const resolution::Resolved> resolved;
  {
    const std::lock_guard lock(mutex_);
    if (!resolved_ || state_ != snapshot->state()) resolved_ = resolution::make_resolved();
    state_ = snapshot->state();
    resolved = resolved_;
  }
  return {std::move(snapshot), std::move(resolved), root_};
}

}  // namespace tarnwick::repository
