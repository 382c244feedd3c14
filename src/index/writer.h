// Puts files into an index and takes them out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "index/file_record.h"
#include "index/meta.h"
#include "index/past_commits.h"

namespace tarnwick::index {

class Connection;
class FileRows;
class WriterLock;

struct StoredFile {
  std::int64_t id = 0;
  FileInfo info;
};

struct ComponentRow {
  std::string name;
  std::string path;  ///< directory; empty for the root

  friend bool operator==(const ComponentRow&, const ComponentRow&) = default;
};

/// Writes an index, which nobody else writes as long as this lives (Index::write). One thread. Changes belong
/// into a Transaction. Errors: IndexError; after one nothing but the end of the transaction is of use.
///
/// The search table takes rows fastest in ascending order: remove files first, then add, both by ascending
/// id.
class Writer {
 public:
  /// Begins with the object. What was not committed is rolled back with it.
  class Transaction {
   public:
    explicit Transaction(Writer& writer);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    /// Shows readers what was written, and ends the transaction.
    void commit();
    /// Shows readers what was written, and goes on.
    void commit_batch();

   private:
    Connection* connection_;
    bool is_open_ = true;
  };

  Writer(std::unique_ptr<WriterLock> lock, std::unique_ptr<Connection> connection,
         std::optional<std::string> message);
  ~Writer();

  /// For the user: why the index is rebuilt; nothing when it is not.
  const std::optional<std::string>& message() const { return message_; }

  std::optional<std::string> get(const MetaKey<std::string>& key) const;
  std::optional<std::int64_t> get(const MetaKey<std::int64_t>& key) const;
  /// No value: the fact is forgotten.
  void set(const MetaKey<std::string>& key, const std::optional<std::string>& value);
  void set(const MetaKey<std::int64_t>& key, const std::optional<std::int64_t>& value);

  /// Every file, without order; `info.path` and the stats, hash, language and skip are set.
  std::vector<StoredFile> files() const;
  std::int64_t next_file_id() const;
  /// Stores a file under an id that is free.
  void add(std::int64_t file_id, const FileRecord& record);
  /// Takes a file out; one that is not there is no error.
  void remove(std::int64_t file_id);
  /// Notes that a file looks different but holds the same.
  void touch(std::int64_t file_id, const FileStat& stat);
  /// Forgets the names that nothing bears or uses any more after `remove`. Call once, after the last `add`.
  void drop_unused_names();
  /// Takes every file out.
  void clear();

  /// Makes `components` those of the index, and each file that of its innermost one. `component_of` gives the
  /// position in `components` of a path's component, or nothing.
  void set_components(const std::vector<ComponentRow>& components,
                      const std::function<std::optional<std::size_t>(std::string_view path)>& component_of);

  PastCommits past_commits() const;
  void set_past_commits(const PastCommits& history);

  /// Gives unused space back to the file system when it is a good part of the file; else does nothing.
  /// Outside of transactions. The file shrinks when its last connection closes.
  void shrink();

 private:
  std::unique_ptr<WriterLock> lock_;
  std::unique_ptr<Connection> connection_;
  std::unique_ptr<FileRows> rows_;
  std::optional<std::string> message_;
};

}  // namespace tarnwick::index
