#include "index/index_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>
#include <system_error>
#include <thread>

#include "index/errors.h"
#include "index/index.h"
#include "index/schema.h"

namespace tarnwick::index {
namespace fs = std::filesystem;
namespace {

constexpr std::chrono::milliseconds LOCK_POLL{20};

IndexError::Kind kind_of_errno(int error) {
  return error == ENOSPC || error == EDQUOT ? IndexError::Kind::full : IndexError::Kind::unwritable;
}

fs::path cache_folder() {
  // A relative path in the variable is to be ignored, says the base directory specification.
  if (const char* cache = std::getenv("XDG_CACHE_HOME"); cache != nullptr && *cache == '/') return cache;
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0')
    return fs::path(home) / ".cache";
  throw IndexError(
      IndexError::Kind::unwritable,
      "neither XDG_CACHE_HOME nor HOME is set: there is no place for the index (name one with --index)");
}

/// The characters of a directory's name that are safe in any file name.
std::string readable_name(const fs::path& root) {
  std::string name;
  for (const char c : root.filename().string()) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '-' || c == '_' || c == '.';
    name += plain ? c : '_';
  }
  return name.substr(0, 60);
}

void make_folder(const fs::path& file) {
  std::error_code error;
  const fs::path folder = file.parent_path();
  if (!folder.empty()) fs::create_directories(folder, error);
  if (error) {
    throw IndexError(kind_of_errno(error.value()),
                     "cannot make the folder " + folder.string() + " for the index: " + error.message());
  }
}

void remove_index(const fs::path& file) {
  for (const char* suffix : {"", "-wal", "-shm"}) {
    std::error_code error;
    fs::remove(fs::path(file.string() + suffix), error);
    if (error) {
      throw IndexError(IndexError::Kind::unwritable,
                       "cannot remove " + file.string() + suffix + ": " + error.message());
    }
  }
}

enum class State { empty, current, older };

State check(Connection& connection) {
  // One state of the file: another may be making the tables at this moment.
  const Transaction reading(connection);
  const std::int64_t version = connection.number("PRAGMA user_version");
  const std::int64_t application = connection.number("PRAGMA application_id");
  const std::string name = "the index file " + connection.file().string();
  if (version == 0 && application == 0 && connection.number("SELECT count(*) FROM sqlite_master") == 0) {
    return State::empty;
  }
  if (application != APPLICATION_ID) {
    throw IndexError(IndexError::Kind::foreign, name + " is a database of something else; it is left alone");
  }
  if (version > SCHEMA_VERSION) {
    throw IndexError(IndexError::Kind::newer, name + " was written by a newer tarnwick (schema " +
                                                  std::to_string(version) + ", this one knows " +
                                                  std::to_string(SCHEMA_VERSION) +
                                                  "); remove it or name another one");
  }
  return version == SCHEMA_VERSION ? State::current : State::older;
}

void create_tables(Connection& connection) {
  // Both stay with the file. Space can be given back (Writer::shrink); WAL lets readers go on while the
  // writer writes.
  connection.execute("PRAGMA auto_vacuum = INCREMENTAL");
  connection.execute("PRAGMA journal_mode = WAL");
  Transaction transaction(connection);
  connection.execute(SCHEMA);
  // The hash table in memory of the search table; bigger means fewer, larger segments to merge.
  connection.execute("INSERT INTO search (search, rank) VALUES ('hashsize', 16777216)");
  connection.execute("PRAGMA application_id = " + std::to_string(APPLICATION_ID));
  connection.execute("PRAGMA user_version = " + std::to_string(SCHEMA_VERSION));
  transaction.commit();
}

}  // namespace

fs::path default_index_file(const fs::path& root) {
  std::error_code error;
  fs::path real = fs::canonical(root, error);
  if (error) real = fs::absolute(root).lexically_normal();
  const std::string& text = real.native();
  std::array<char, 17> hash{};
  std::snprintf(hash.data(), hash.size(), "%016llx",
                static_cast<unsigned long long>(XXH3_64bits(text.data(), text.size())));
  return cache_folder() / "tarnwick" / (readable_name(real) + "-" + hash.data() + ".db");
}

WriterLock::WriterLock(const fs::path& index_file, const std::stop_token& stop) {
  make_folder(index_file);
  const std::string file = index_file.string() + ".lock";
  descriptor_ = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (descriptor_ < 0) {
    throw IndexError(kind_of_errno(errno), "cannot write the index: " + file + ": " + std::strerror(errno));
  }
  while (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
    const int error = errno;
    if ((error != EWOULDBLOCK && error != EINTR) || stop.stop_requested()) {
      ::close(descriptor_);
      throw IndexError(IndexError::Kind::other, stop.stop_requested()
                                                    ? "interrupted while another process was indexing"
                                                    : "cannot lock " + file + ": " + std::strerror(error));
    }
    std::this_thread::sleep_for(LOCK_POLL);
  }
}

WriterLock::~WriterLock() {
  ::close(descriptor_);
}

bool may_hold_index(const fs::path& file) {
  constexpr std::string_view HEADER("SQLite format 3\0", 16);
  std::string head(HEADER.size(), '\0');
  std::ifstream stream(file, std::ios::binary);
  if (!stream.read(head.data(), static_cast<std::streamsize>(head.size()))) return stream.gcount() == 0;
  return head == HEADER;
}

FileIdentity identity_of(const fs::path& file) {
  struct stat status {};
  return stat(file.c_str(), &status) == 0 ? FileIdentity(status.st_dev, status.st_ino) : FileIdentity();
}

std::unique_ptr<Connection> open_for_writing(const fs::path& file, std::optional<std::string>& message) {
  make_folder(file);
  auto connection = std::make_unique<Connection>(file, Connection::Mode::write);
  State state = check(*connection);
  if (state == State::older) {
    connection.reset();
    remove_index(file);
    connection = std::make_unique<Connection>(file, Connection::Mode::write);
    message = "the index was written by an older release and is rebuilt";
    state = State::empty;
  }
  // A power cut may lose the last commits, not more; they are made again.
  connection->execute("PRAGMA synchronous = NORMAL");
  if (state == State::empty) create_tables(*connection);
  return connection;
}

std::unique_ptr<Connection> open_for_reading(const fs::path& file) {
  std::error_code error;
  if (!fs::exists(file, error)) {
    throw IndexError(IndexError::Kind::missing, "there is no index file " + file.string());
  }
  auto connection = std::make_unique<Connection>(file, Connection::Mode::read);
  switch (check(*connection)) {
    case State::empty:
      throw IndexError(IndexError::Kind::missing, "the index file " + file.string() + " is empty");
    case State::older:
      throw IndexError(IndexError::Kind::missing,
                       "the index file " + file.string() + " is of an older release");
    case State::current:
      break;
  }
  return connection;
}

std::string set_aside(const fs::path& file, const std::string& reason) {
  for (int number = 1;; ++number) {
    fs::path aside = file.string() + ".damaged-" + std::to_string(number);
    std::error_code error;
    if (fs::exists(aside, error)) continue;
    fs::rename(file, aside, error);
    if (error) {
      throw IndexError(IndexError::Kind::unwritable,
                       "cannot rename the damaged index " + file.string() + ": " + error.message());
    }
    // What the log holds belongs to the damaged file; left behind, it would be replayed into the new one.
    fs::remove(fs::path(file.string() + "-wal"), error);
    fs::remove(fs::path(file.string() + "-shm"), error);
    return reason + "; it was set aside as " + aside.string() + " and is rebuilt";
  }
}

}  // namespace tarnwick::index
