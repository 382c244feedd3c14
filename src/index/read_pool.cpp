#include "index/read_pool.h"

#include <sys/stat.h>

#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

#include "index/index_file.h"

namespace tarnwick::index {
namespace {

/// More readers than these at a time are rare; each keeps a file open and pages in memory.
constexpr std::size_t MOST_IDLE = 4;

/// Which file a path leads to; all 0 for none.
using Identity = std::pair<dev_t, ino_t>;

Identity identity_of(const std::filesystem::path& file) {
  struct stat status {};
  return stat(file.c_str(), &status) == 0 ? Identity(status.st_dev, status.st_ino) : Identity();
}

}  // namespace

/// What the pool and the connections given out share.
class ReadPool::Shelf {
 public:
  explicit Shelf(std::filesystem::path file) : file_(std::move(file)) {}

  struct Taken {
    Identity identity;
    std::unique_ptr<Connection> connection;
  };

  Taken take() {
    const Identity now = identity_of(file_);  // before opening: at worst, the next look finds another
    std::unique_ptr<Connection> connection = idle(now);
    if (!connection) connection = open_for_reading(file_);
    connection->begin_reading();
    connection->share(facts(now, connection->generation()));
    return {now, std::move(connection)};
  }

  void give_back(const Identity& identity, std::unique_ptr<Connection> connection) {
    try {
      connection->end_reading();
    } catch (const SQLite::Exception&) {
      return;  // the next reader opens another
    }
    const std::lock_guard lock(mutex_);
    if (identity == identity_ && idle_.size() < MOST_IDLE) idle_.push_back(std::move(connection));
  }

 private:
  std::unique_ptr<Connection> idle(const Identity& now) {
    const std::lock_guard lock(mutex_);
    if (now != identity_) idle_.clear();
    identity_ = now;
    if (idle_.empty()) return nullptr;
    std::unique_ptr<Connection> connection = std::move(idle_.back());
    idle_.pop_back();
    return connection;
  }

  std::shared_ptr<SharedFacts> facts(const Identity& now, std::int64_t generation) {
    const std::lock_guard lock(mutex_);
    if (!facts_ || facts_of_ != std::pair(now, generation)) facts_ = std::make_shared<SharedFacts>();
    facts_of_ = {now, generation};
    return facts_;
  }

  std::filesystem::path file_;
  std::mutex mutex_;
  Identity identity_;  ///< of the file that the idle ones are connected to
  std::vector<std::unique_ptr<Connection>> idle_;
  std::shared_ptr<SharedFacts> facts_;
  std::pair<Identity, std::int64_t> facts_of_;
};

ReadPool::ReadPool(std::filesystem::path index_file)
    : shelf_(std::make_shared<Shelf>(std::move(index_file))) {}

std::shared_ptr<Connection> ReadPool::take() {
  Shelf::Taken taken = shelf_->take();
  const auto give_back = [shelf = shelf_, identity = taken.identity](Connection* connection) {
    shelf->give_back(identity, std::unique_ptr<Connection>(connection));
  };
  return {taken.connection.release(), give_back};
}

}  // namespace tarnwick::index
