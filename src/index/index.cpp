#include "index/index.h"

#include <mutex>
#include <optional>
#include <utility>

#include "index/index_file.h"
#include "index/read_pool.h"

namespace tarnwick::index {

/// What was reported and is not repaired yet.
struct Index::Damage {
  std::mutex mutex;
  std::optional<std::string> reason;
  FileIdentity identity;
};

Index::Index(std::filesystem::path file)
    : file_(std::move(file)), pool_(std::make_shared<ReadPool>(file_)), damage_(std::make_unique<Damage>()) {}

Index::~Index() = default;

std::unique_ptr<Snapshot> Index::snapshot() const {
  return pool_->take();
}

std::unique_ptr<Writer> Index::write(const std::stop_token& stop) {
  auto lock = std::make_unique<WriterLock>(file_, stop);
  std::optional<std::string> message;
  {
    const std::lock_guard hold(damage_->mutex);
    const std::optional<std::string> reason = std::exchange(damage_->reason, std::nullopt);
    if (reason && damage_->identity == identity_of(file_)) message = set_aside(file_, *reason);
  }
  std::unique_ptr<Connection> connection;
  try {
    connection = open_for_writing(file_, message);
  } catch (const IndexError& error) {
    if (error.kind() != IndexError::Kind::damaged) throw;
    message = set_aside(file_, error.what());
    connection = open_for_writing(file_, message);
  }
  return std::make_unique<Writer>(std::move(lock), std::move(connection), std::move(message));
}

void Index::report_damage(const IndexError& error) {
  const std::lock_guard hold(damage_->mutex);
  damage_->reason = error.what();
  damage_->identity = identity_of(file_);
}

}  // namespace tarnwick::index
