// One connection to an index file.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tarnwick::storage {

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
  std::unordered_map<std::string_view, std::unique_ptr<SQLite::Statement>> statements_;
};

/// A JSON array for `json_each(?)`, which makes one query of a batch. Texts may hold lone surrogates, as the
/// paths of the index do, which JSON libraries refuse or replace; a text with a NUL, which SQLite cuts there,
/// is left out.
std::string json_array(const std::vector<std::int64_t>& numbers);
std::string json_array(const std::vector<std::string_view>& texts);

}  // namespace tarnwick::storage
