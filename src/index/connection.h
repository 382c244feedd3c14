// One connection to an index file: statements, rows as types, transactions.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <array>
#include <concepts>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "index/meta.h"
#include "index/past_commits.h"

namespace tarnwick::index {

/// Bytes that are stored as they are; a view.
struct Blob {
  std::string_view bytes;
};

/// Turns errors of the database, and DamagedValue, into an IndexError that names `file`. To be called while
/// one of them is handled; others pass through.
[[noreturn]] void rethrow_as_index_error(const std::filesystem::path& file);

/// The rows of a query as tuples of `Columns`: std::int64_t, double, bool, std::string, std::string_view
/// (valid until the next row) or std::optional<std::string>. A single pass. The statement is reset with this
/// object; until then it must not run a second time.
template <class... Columns>
class Rows {
 public:
  Rows(SQLite::Statement& statement, const std::filesystem::path& file)
      : statement_(&statement), file_(&file) {}
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;
  ~Rows() { statement_->tryReset(); }

  /// The next row; nothing behind the last.
  bool next() {
    try {
      return statement_->executeStep();
    } catch (...) {
      rethrow_as_index_error(*file_);
    }
  }
  std::tuple<Columns...> row() const { return row(std::index_sequence_for<Columns...>()); }

  struct End {};
  class Iterator {
   public:
    explicit Iterator(Rows* rows) : rows_(rows), is_at_row_(rows->next()) {}
    std::tuple<Columns...> operator*() const { return rows_->row(); }
    Iterator& operator++() {
      is_at_row_ = rows_->next();
      return *this;
    }
    bool operator==(End /*end*/) const { return !is_at_row_; }

   private:
    Rows* rows_;
    bool is_at_row_;
  };
  Iterator begin() { return Iterator(this); }
  End end() const { return {}; }

 private:
  template <std::size_t... At>
  std::tuple<Columns...> row(std::index_sequence<At...> /*at*/) const {
    return {value<Columns>(statement_->getColumn(static_cast<int>(At)))...};
  }

  template <class Value>
  static Value value(const SQLite::Column& column) {
    if constexpr (std::same_as<Value, std::optional<std::string>>) {
      return column.isNull() ? Value() : Value(column.getString());
    } else if constexpr (std::same_as<Value, std::string_view>) {
      const auto* bytes = static_cast<const char*>(column.getBlob());
      return {bytes, bytes == nullptr ? 0 : static_cast<std::size_t>(column.getBytes())};
    } else if constexpr (std::same_as<Value, std::string>) {
      return column.getString();
    } else if constexpr (std::same_as<Value, double>) {
      return column.getDouble();
    } else {
      return static_cast<Value>(column.getInt64());
    }
  }

  SQLite::Statement* statement_;
  const std::filesystem::path* file_;
};

/// A connection with the statements that ran on it, each prepared once. One thread at a time. Every error of
/// the database is an IndexError that names the file.
class Connection {
 public:
  enum class Mode { read, write };

  /// Opens `file`; write mode creates it.
  Connection(const std::filesystem::path& file, Mode mode);

  const std::filesystem::path& file() const { return file_; }

  /// Runs a query over `arguments`, which are copied. `sql` must outlive the connection.
  template <class... Columns, class... Arguments>
  Rows<Columns...> rows(const char* sql, const Arguments&... arguments) {
    SQLite::Statement& statement = prepare(sql);
    guard([&] { bind(statement, false, arguments...); });
    return {statement, file_};
  }

  /// The first column of the first row; nothing without a row.
  template <class Value, class... Arguments>
  std::optional<Value> first(const char* sql, const Arguments&... arguments) {
    Rows<Value> rows = this->rows<Value>(sql, arguments...);
    return rows.next() ? std::optional<Value>(std::get<0>(rows.row())) : std::nullopt;
  }
  std::int64_t number(const char* sql) { return first<std::int64_t>(sql).value_or(0); }

  /// Runs a statement that answers nothing. `sql` must outlive the connection.
  template <class... Arguments>
  void run(const char* sql, const Arguments&... arguments) {
    run(prepare(sql), arguments...);
  }
  template <class... Arguments>
  void run(SQLite::Statement& statement, const Arguments&... arguments) {
    guard([&] {
      bind(statement, true, arguments...);
      statement.exec();
      statement.reset();
    });
  }

  /// Runs statements that run once.
  void execute(const std::string& sql);
  /// Ends a transaction without effect. No error: one may have ended it already, and is the better one to
  /// tell.
  void roll_back() noexcept;

  /// The statement of that very text, reset and without bindings; stays where it is.
  SQLite::Statement& prepare(const char* sql);

  std::int64_t last_id() const { return database_.getLastInsertRowid(); }

  std::optional<std::string> get(const MetaKey<std::string>& key);
  /// Throws IndexError (damaged) for a value that is no number.
  std::optional<std::int64_t> get(const MetaKey<std::int64_t>& key);
  /// Empty where no history was read.
  PastCommits past_commits();
  /// Tells readers that the transaction under way changes what the index holds.
  void note_change();

  /// Fixes the state of the index that is read until `end_reading`.
  void begin_reading();
  /// Leaves that state, which ends all statements.
  void end_reading();
  /// Asks `is_over` while statements run, which end with an error once it answers true; null: no more. It
  /// must outlive its use.
  void stop_when(const std::function<bool()>* is_over);

  /// Runs `work` with its errors turned into IndexErrors.
  template <class Work>
  auto guard(Work&& work) const -> decltype(work()) {
    try {
      return work();
    } catch (...) {
      rethrow_as_index_error(file_);
    }
  }

 private:
  template <class... Arguments>
  static void bind(SQLite::Statement& statement, [[maybe_unused]] bool in_place,
                   const Arguments&... arguments) {
    int at = 0;
    (bind_one(statement, ++at, in_place, arguments), ...);
  }
  template <class Argument>
  static void bind_one(SQLite::Statement& statement, int at, [[maybe_unused]] bool in_place,
                       const Argument& argument) {
    if constexpr (std::integral<Argument>) {
      statement.bind(at, static_cast<std::int64_t>(argument));
    } else if constexpr (std::same_as<Argument, Blob>) {
      statement.bindNoCopy(at, argument.bytes.data(), static_cast<int>(argument.bytes.size()));
    } else if constexpr (std::same_as<Argument, std::string>) {
      in_place ? statement.bindNoCopy(at, argument) : statement.bind(at, argument);
    } else if constexpr (std::convertible_to<Argument, std::string_view>) {
      statement.bind(at, std::string(std::string_view(argument)));
    } else if (argument) {
      bind_one(statement, at, in_place, *argument);
    } else {
      statement.bind(at);  // an optional without a value
    }
  }

  std::filesystem::path file_;
  SQLite::Database database_;
  std::unordered_map<std::string_view, std::unique_ptr<SQLite::Statement>> statements_;
};

/// Begins with the object; rolls back with it unless it was committed.
class Transaction {
 public:
  explicit Transaction(Connection& connection, const char* begin = "BEGIN") : connection_(&connection) {
    connection.execute(begin);
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction() {
    if (is_open_) connection_->roll_back();
  }

  void commit() {
    connection_->execute("COMMIT");
    is_open_ = false;
  }

 private:
  Connection* connection_;
  bool is_open_ = true;
};

/// A statement that is prepared when it first runs: for those that run for each row.
class Command {
 public:
  Command(Connection& connection, const char* sql) : connection_(&connection), sql_(sql) {}

  template <class... Arguments>
  void operator()(const Arguments&... arguments) {
    if (statement_ == nullptr) statement_ = &connection_->prepare(sql_);
    connection_->run(*statement_, arguments...);
  }

 private:
  Connection* connection_;
  const char* sql_;
  SQLite::Statement* statement_ = nullptr;
};

/// A JSON array for `json_each(?)`, which makes one query of a batch. Texts may hold lone surrogates, as the
/// paths of the index do, which JSON libraries refuse or replace; a text with a NUL, which SQLite cuts there,
/// is left out.
std::string json_array(const std::vector<std::int64_t>& numbers);
std::string json_array(const std::vector<std::string_view>& texts);

}  // namespace tarnwick::index
