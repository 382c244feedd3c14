#include "index/read_pool.h"

#include <utility>

#include "index/errors.h"
#include "index/index_file.h"

namespace tarnwick::index {
namespace {

/// More readers than these at a time are rare; each keeps a file open and pages in memory.
constexpr std::size_t MAX_IDLE = 4;

bool is_same_file(const StateId& a, const StateId& b) {
  return a.device == b.device && a.inode == b.inode;
}

/// For Snapshot::postings and rows_with: made outside of transactions, so that they stay with the connection.
void create_word_tables(Connection& connection) {
  connection.execute(
      "CREATE VIRTUAL TABLE temp.search_words USING fts5vocab (main, search, instance);"
      "CREATE VIRTUAL TABLE temp.word_rows USING fts5vocab (main, search, row)");
}

}  // namespace

std::unique_ptr<Snapshot> ReadPool::take() {
  const auto [device, inode] = identity_of(file_);  // before opening: at worst, the next look finds another
  StateId id{device, inode, 0};
  std::unique_ptr<Connection> connection = idle(id);
  if (!connection) {
    connection = open_for_reading(file_);
    create_word_tables(*connection);
  }
  connection->begin_reading();
  id.generation = connection->get(meta::GENERATION).value_or(0);
  return std::unique_ptr<Snapshot>(new Snapshot(std::move(connection), id, tables(id), shared_from_this()));
}

void ReadPool::give_back(const StateId& id, std::unique_ptr<Connection> connection) {
  try {
    connection->stop_when(nullptr);
    connection->end_reading();
  } catch (const IndexError&) {
    return;  // the next reader opens another
  }
  const std::lock_guard lock(mutex_);
  if (is_same_file(id, last_) && idle_.size() < MAX_IDLE) idle_.push_back(std::move(connection));
}

std::unique_ptr<Connection> ReadPool::idle(const StateId& now) {
  const std::lock_guard lock(mutex_);
  if (!is_same_file(now, last_)) {
    idle_.clear();
    tables_ = nullptr;
    last_ = now;
  }
  if (idle_.empty()) return nullptr;
  std::unique_ptr<Connection> connection = std::move(idle_.back());
  idle_.pop_back();
  return connection;
}

std::shared_ptr<Snapshot::Tables> ReadPool::tables(const StateId& id) {
  const std::lock_guard lock(mutex_);
  // A reader of a file that was replaced meanwhile is the last of its state.
  if (!is_same_file(id, last_)) return std::make_shared<Snapshot::Tables>();
  if (!tables_ || id != last_) tables_ = std::make_shared<Snapshot::Tables>();
  last_ = id;
  return tables_;
}

}  // namespace tarnwick::index
