#include "indexing/indexer.h"

#include <xxhash.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <chrono>
#include <memory>
#include <thread>
#include <unordered_map>
#include <utility>

#include "files/source_text.h"
#include "git/git_files.h"
#include "index/errors.h"
#include "index/file_record.h"
#include "indexing/indexer_components.h"
#include "indexing/indexer_pipeline.h"
#include "indexing/indexer_skips.h"
#include "indexing/tree_walk.h"
#include "text/surrogates.h"

namespace tarnwick::indexing {
namespace {

using index::FileRecord;
using index::StoredFile;
using index::Writer;

/// How many files are read ahead of the writer, and of how many bytes.
constexpr std::size_t MAX_AHEAD = 1024;
constexpr std::size_t MAX_BYTES_AHEAD = std::size_t{16} << 20U;

/// A first indexing shows readers what is done after this time, and then each time that it has taken twice as
/// long: each commit leaves the search tables more to merge.
constexpr std::chrono::milliseconds BATCH_TIME{250};

std::int64_t now_ns() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

std::int64_t hash_of(std::string_view bytes) {
  return std::bit_cast<std::int64_t>(XXH3_64bits(bytes.data(), bytes.size()));
}

/// A file to be put into the index under an id.
struct Job {
  std::int64_t file_id = 0;
  std::string path;
  std::string_view skip;  ///< why the walk left it out, or empty: to be read
};

/// What differs between an index and its tree. Removals and jobs go by ascending id.
struct Plan {
  std::vector<std::int64_t> removals;
  std::vector<Job> jobs;
  std::vector<std::pair<std::int64_t, index::FileStat>> touched;
  std::int64_t added = 0;
  std::int64_t changed = 0;
  std::int64_t removed = 0;

  bool empty() const { return removals.empty() && jobs.empty(); }
};

class Reader {
 public:
  Reader(const std::filesystem::path& root, const facts::Extractor& extractor)
      : root_(root), extractor_(extractor) {}

  /// Reads one file as far as it gets; what went wrong is in `info.skip`.
  FileRecord read(const Job& job) const {
    FileRecord record;
    record.info.path = job.path;
    record.info.is_test = extractor_.is_test_path(job.path);
    if (!job.skip.empty()) {
      record.info.skip = std::string(job.skip);
      return record;
    }
    const std::int64_t before = now_ns();
    const files::FileBytes file = files::read_regular_file(files::source_path(root_, job.path));
    if (file.error == 0 || file.error == EFBIG) record.info.stat = file_stat(file.status, before);
    if (file.error != 0) {
      record.info.skip = std::string(reason_of(file.error));
      return record;
    }
    record.info.hash = hash_of(file.bytes);
    return digest(std::move(record.info), file.bytes);
  }

  /// The hash of a file's bytes and its stats; nothing when it cannot be read.
  std::optional<std::pair<std::int64_t, index::FileStat>> look(const std::string& path) const {
    const std::int64_t before = now_ns();
    const files::FileBytes file = files::read_regular_file(files::source_path(root_, path));
    if (file.error != 0) return std::nullopt;
    return std::pair(hash_of(file.bytes), file_stat(file.status, before));
  }

 private:
  static std::string_view reason_of(int error) {
    switch (error) {
      case EFBIG:
        return skips::TOO_LARGE;
      case EINVAL:
        return skips::NOT_REGULAR;
      case ELOOP:
        return skips::SYMLINK;
      default:
        return skips::UNREADABLE;
    }
  }

  FileRecord digest(index::FileInfo info, const std::string& bytes) const {
    const std::string text = files::decode_source(bytes);
    const std::string language = extractor_.language_of(info.path, text);
    std::string_view skip = skips::by_content(bytes, text);
    if (skip.empty() && language.empty()) skip = skips::UNSUPPORTED;
    if (!skip.empty()) {
      info.skip = std::string(skip);
      FileRecord record;
      record.info = std::move(info);
      return record;
    }
    info.language = language;
    info.is_source = extractor_.is_source(language);
    info.lines = std::count(text.begin(), text.end(), '\n') + (text.empty() || text.ends_with('\n') ? 0 : 1);
    facts::FileFacts facts = extractor_.extract(language, text, info.path);
    return index::make_record(std::move(info), std::move(facts), text);
  }

  const std::filesystem::path& root_;
  const facts::Extractor& extractor_;
};

bool is_unchanged(const TreeEntry& entry, const index::FileInfo& stored) {
  if (!entry.skip.empty()) return stored.skip == entry.skip;
  return stored.stat.stamp != 0 && stored.stat == entry.stat;
}

class Update {
 public:
  Update(const IndexOptions& options, Writer& writer, Progress* progress, IndexReport& report)
      : options_(options),
        extractor_(*options.extractor),
        reader_(options.root, extractor_),
        writer_(writer),
        progress_(progress),
        report_(report) {}

  void run() {
    report_.first = !writer_.get(index::meta::INDEXED_AT);
    full_ = options_.full ||
            writer_.get(index::meta::READER).value_or(extractor_.version()) != extractor_.version();
    const std::vector<TreeEntry> entries = walk();
    report_.files = static_cast<std::int64_t>(entries.size());
    std::vector<StoredFile> stored;
    if (!full_) stored = writer_.files();
    const Plan plan = make_plan(entries, stored);
    report_.added = plan.added;
    report_.changed = plan.changed;
    report_.removed = plan.removed;
    if (plan.empty() && !report_.first && !full_) return note_touched(plan);
    apply(plan, entries);
  }

 private:
  std::vector<TreeEntry> walk() const {
    WalkOptions walk{.root = options_.root, .include_ignored = options_.include_ignored};
    walk.is_unsupported = [&](std::string_view path) { return !may_matter(extractor_, path); };
    return walk_tree(walk);
  }

  Plan make_plan(const std::vector<TreeEntry>& entries, const std::vector<StoredFile>& stored) {
    std::unordered_map<std::string_view, const StoredFile*> by_path;
    by_path.reserve(stored.size());
    for (const StoredFile& file : stored) by_path.emplace(file.info.path, &file);
    Plan plan;
    std::int64_t next_id = full_ ? 1 : writer_.next_file_id();
    for (const TreeEntry& entry : entries) {
      const auto found = by_path.find(entry.path);
      if (found == by_path.end()) {
        ++plan.added;
        plan.jobs.push_back({next_id++, entry.path, entry.skip});
        continue;
      }
      const StoredFile& file = *found->second;
      by_path.erase(found);
      if (!is_unchanged(entry, file.info)) plan_change(entry, file, plan);
    }
    for (const auto& [path, file] : by_path) {
      ++plan.removed;
      plan.removals.push_back(file->id);
    }
    std::sort(plan.removals.begin(), plan.removals.end());
    std::sort(plan.jobs.begin(), plan.jobs.end(),
              [](const Job& a, const Job& b) { return a.file_id < b.file_id; });
    return plan;
  }

  /// A file that looks different: one that holds the same after all is only noted.
  void plan_change(const TreeEntry& entry, const StoredFile& file, Plan& plan) const {
    if (entry.skip.empty() && file.info.hash != 0) {
      const auto now = reader_.look(entry.path);
      if (now && now->first == file.info.hash) {
        plan.touched.emplace_back(file.id, now->second);
        return;
      }
    }
    ++plan.changed;
    plan.removals.push_back(file.id);
    plan.jobs.push_back({file.id, entry.path, entry.skip});
  }

  void note_touched(const Plan& plan) {
    if (plan.touched.empty()) return;
    Writer::Transaction transaction(writer_);
    for (const auto& [id, stat] : plan.touched) writer_.touch(id, stat);
    transaction.commit();
  }

  void apply(const Plan& plan, const std::vector<TreeEntry>& entries) {
    Writer::Transaction transaction(writer_);
    if (full_) writer_.clear();
    writer_.set(index::meta::READER, extractor_.version());
    writer_.set(index::meta::ROOT, text::from_os(options_.root.native()));
    if (report_.first) writer_.set(index::meta::FILES_TO_INDEX, report_.files);
    for (const auto& [id, stat] : plan.touched) writer_.touch(id, stat);
    for (const std::int64_t id : plan.removals) writer_.remove(id);
    report_.interrupted = !add_files(plan, transaction);
    if (!report_.interrupted) {
      update_components(entries);
      writer_.drop_unused_names();
      writer_.set(index::meta::INDEXED_AT, now_ns() / 1'000'000'000);
      writer_.set(index::meta::FILES_TO_INDEX, std::nullopt);
      writer_.set(index::meta::GIT_HEAD, git::git_head(options_.root));
    }
    // What an update did not finish is rolled back; a first indexing goes on there the next time.
    if (report_.interrupted && !report_.first) return;
    transaction.commit();
    if (!report_.interrupted) writer_.shrink();
  }

  /// False when interrupted.
  bool add_files(const Plan& plan, Writer::Transaction& transaction) {
    const auto total = static_cast<std::int64_t>(plan.jobs.size());
    const auto size_of = [](const FileRecord& record) {
      return static_cast<std::size_t>(record.info.stat.size);
    };
    OrderedPipeline<FileRecord> records(plan.jobs.size(), {MAX_AHEAD, MAX_BYTES_AHEAD, size_of},
                                        thread_count(plan.jobs.size()),
                                        [&](std::size_t number) { return reader_.read(plan.jobs[number]); });
    const auto start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::duration batch_end = BATCH_TIME;
    if (progress_ != nullptr && total > 0) progress_->files_done(0, total, plan.jobs.front().path);
    for (std::int64_t done = 0; const std::optional<FileRecord> record = records.next(); ++done) {
      if (options_.stop.stop_requested()) return false;
      writer_.add(plan.jobs[static_cast<std::size_t>(done)].file_id, *record);
      if (progress_ != nullptr) progress_->files_done(done + 1, total, record->info.path);
      const auto elapsed = std::chrono::steady_clock::now() - start;
      if (report_.first && elapsed > batch_end) {
        transaction.commit_batch();
        batch_end = 2 * elapsed;
      }
    }
    return true;
  }

  unsigned thread_count(std::size_t jobs) const {
    const unsigned cores =
        std::max(1U, options_.threads != 0 ? options_.threads : std::thread::hardware_concurrency());
    return static_cast<unsigned>(std::min<std::size_t>(cores, std::max<std::size_t>(jobs, 1)));
  }

  void update_components(const std::vector<TreeEntry>& entries) {
    std::vector<std::string> paths;
    for (const TreeEntry& entry : entries) {
      if (entry.skip.empty()) paths.push_back(entry.path);
    }
    const std::vector<index::ComponentRow> components = find_components(options_.root, paths);
    writer_.set_components(components, ComponentFinder(components));
  }

  const IndexOptions& options_;
  const facts::Extractor& extractor_;
  Reader reader_;
  Writer& writer_;
  Progress* progress_;
  IndexReport& report_;
  bool full_ = false;
};

IndexReport run_update(const IndexOptions& options, Progress* progress) {
  const std::unique_ptr<Writer> writer = options.index->write(options.stop);
  if (writer->message() && progress != nullptr) progress->message(*writer->message());
  IndexReport report;
  Update(options, *writer, progress, report).run();
  return report;
}

}  // namespace

bool may_matter(const facts::Extractor& extractor, std::string_view path) {
  return is_manifest(path) || !extractor.language_of(path, std::nullopt).empty();
}

IndexReport update_index(const IndexOptions& options, Progress* progress) {
  IndexOptions resolved = options;
  resolved.root = std::filesystem::canonical(options.root);
  try {
    return run_update(resolved, progress);
  } catch (const index::IndexError& error) {
    if (error.kind() != index::IndexError::Kind::damaged) throw;
    options.index->report_damage(error);
    return run_update(resolved, progress);
  }
}

}  // namespace tarnwick::indexing
