// One connection to an index file.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "index/shared_facts.h"

namespace tarnwick::index {

/// A connection with the statements that ran on it, each prepared once. One thread at a time.
class Connection {
 public:
  enum class Mode { read, write };

  /// Opens `file`; write mode creates it. Throws IndexError.
  Connection(const std::filesystem::path& file, Mode mode);

  SQLite::Database& database() { return database_; }
  const std::filesystem::path& file() const { return file_; }

  /// The statement of `sql`, reset and without bindings. Valid until the next call with the same text.
  SQLite::Statement& prepare(std::string_view sql);

  /// Runs statements that answer nothing.
  void execute(const std::string& sql);

  /// The first column of the first row as an integer; `otherwise` when there is no row.
  std::int64_t number(std::string_view sql, std::int64_t otherwise = 0);

  /// Fixes the state of the index that is read until `end_reading`.
  void begin_reading();
  /// Leaves that state: statements end, and a progress handler is taken off. Throws SQLite::Exception.
  void end_reading();
  /// Another number whenever what the index holds is another (note_change).
  std::int64_t generation();
  /// Tells readers that the transaction under way changes what the index holds.
  void note_change();

  /// The object of that class that goes with the state of the index which this connection reads: made now, or
  /// by another that shares its facts. For connections that only read, inside one transaction.
  template <class Fact>
  const Fact& fact() {
    return facts_->get<Fact>(*this);
  }
  /// From here on the connection reads the state that these facts are of.
  void share(std::shared_ptr<SharedFacts> facts) { facts_ = std::move(facts); }

  /// Runs `work`; an error of the database becomes an IndexError that names the file.
  template <class Work>
  auto guard(Work&& work) -> decltype(work()) {
    return guarded(file_, work);
  }

  template <class Work>
  static auto guarded(const std::filesystem::path& file, Work&& work) -> decltype(work()) {
    try {
      return work();
    } catch (const SQLite::Exception& error) {
      rethrow(file, error);
    }
  }

  [[noreturn]] static void rethrow(const std::filesystem::path& file, const SQLite::Exception& error);

 private:
  std::filesystem::path file_;
  SQLite::Database database_;
  std::shared_ptr<SharedFacts> facts_ = std::make_shared<SharedFacts>();
  std::unordered_map<std::string_view, std::unique_ptr<SQLite::Statement>> statements_;
};

/// A JSON array for `json_each(?)`, which makes one query of a batch. Texts may hold lone surrogates, as the
/// paths of the index do, which JSON libraries refuse or replace; a text with a NUL, which SQLite cuts there,
/// is left out.
std::string json_array(const std::vector<std::int64_t>& numbers);
std::string json_array(const std::vector<std::string_view>& texts);

}  // namespace tarnwick::index
