#include "cli/indexed_repository.h"

#include <spdlog/fmt/fmt.h>
#include <spdlog/spdlog.h>

#include <cstdlib>

#include "cli/failure.h"
#include "cli/interrupts.h"
#include "extraction/source_extractor.h"
#include "index/errors.h"
#include "indexing/history_store.h"
#include "output/terminal.h"

namespace tarnwick::cli {
namespace fs = std::filesystem;
namespace {

fs::path directory(const std::string& name) {
  std::error_code error;
  fs::path path = fs::canonical(name, error);
  if (error) throw Failure(name + ": " + error.message());
  if (!fs::is_directory(path, error)) throw Failure(name + ": not a directory");
  return path;
}

/// The innermost directory around `start` that git keeps (.git is a file in worktrees and submodules);
/// `start` itself where there is none.
fs::path repository_around(const fs::path& start) {
  for (fs::path path = start;; path = path.parent_path()) {
    std::error_code error;
    if (fs::exists(path / ".git", error)) return path;
    if (path == path.parent_path()) return start;
  }
}

bool is_home(const fs::path& directory) {
  const char* home = std::getenv("HOME");  // NOLINT(concurrency-mt-unsafe): nothing here sets variables
  std::error_code error;
  return home != nullptr && fs::equivalent(directory, home, error);
}

/// The repository that nobody named. A whole machine or home is never meant, though desktop clients start
/// servers there, and some people keep their settings in a repository of their home.
fs::path unnamed_repository() {
  fs::path root = repository_around(directory("."));
  if (root == root.root_path() || is_home(root)) {
    throw Failure(root.string() + ": no repository to index",
                  {"Call it from inside of one, or name a directory with --repo."});
  }
  return root;
}

class ShownProgress final : public indexing::Progress {
 public:
  void files_done(std::int64_t done, std::int64_t total, std::string_view path) override {
    line_.update(done, total, path);
  }
  void message(std::string_view text) override {
    line_.wipe();
    spdlog::warn("{}", output::visible(text));
  }

 private:
  output::ProgressLine line_;
};

git::Patience patience(const UpdateLimits& limits, std::stop_token stop) {
  git::Patience patience{.stop = std::move(stop)};
  if (limits.history) patience.deadline = std::chrono::steady_clock::now() + *limits.history;
  return patience;
}

}  // namespace

CLI::Validator named() {
  return {[](const std::string& path) { return path.empty() ? "The name is empty" : ""; }, ""};
}

void add_repository_options(CLI::App& command, RepositoryOptions& options) {
  command
      .add_option("--repo", options.repo,
                  "The repository's directory; default: the one around the working directory")
      ->type_name("DIR")
      ->check(named());
  command.add_option("--index", options.index, "The index file; default: one in the cache folder")
      ->type_name("FILE")
      ->check(named())
      ->envname("TARNWICK_INDEX");
}

void add_ignored_option(CLI::App& command, RepositoryOptions& options) {
  command.add_flag("--ignored", options.ignored, "Read the files that git ignores too");
}

Location locate(const RepositoryOptions& options) {
  Location location;
  location.root = options.repo.empty() ? unnamed_repository() : directory(options.repo);
  const fs::path file =
      options.index.empty() ? index::default_index_file(location.root) : fs::absolute(options.index);
  // What lies in the cache folder was an index, whatever became of it; a file of the user's own is no damaged
  // index to be set aside.
  if (!options.index.empty() && !index::may_hold_index(file))
    throw Failure(options.index + ": not an index; it is left alone");
  location.store = std::make_shared<repository::Store>(file, location.root);
  return location;
}

const extraction::SourceExtractor& extractor() {
  static const auto folder = languages::own_languages_folder();
  static const extraction::SourceExtractor EXTRACTOR(folder ? languages::read_own_languages(*folder)
                                                            : languages::OwnLanguages());
  return EXTRACTOR;
}

indexing::IndexReport update(const Location& location, const RepositoryOptions& options,
                             const UpdateLimits& limits) {
  const InterruptGuard interrupts;
  ShownProgress progress;
  indexing::IndexReport report = indexing::update_index({.root = location.root,
                                                         .index = &location.index(),
                                                         .include_ignored = options.ignored,
                                                         .full = limits.full,
                                                         .stop = interrupts.token(),
                                                         .extractor = &extractor()},
                                                        &progress);
  if (interrupts.signal() == 0) {
    indexing::update_history({.root = location.root,
                              .index = &location.index(),
                              .patience = patience(limits, interrupts.token())});
  }
  if (interrupts.signal() != 0) throw Interrupted(interrupts.signal());
  return report;
}

void require_indexed_files(const Location& location) {
  const auto snapshot = location.index().snapshot();
  if (snapshot->has_files()) return;
  std::vector<std::string> help;
  for (const auto& [reason, files] : snapshot->skip_counts())
    help.push_back(fmt::format("Left out: {} ({})", files, reason));
  throw Failure(location.root.string() + ": nothing to index", help);
}

void over_sound_index(const Location& location, const RepositoryOptions& options,
                      const std::function<void()>& work) {
  try {
    work();
  } catch (const index::IndexError& error) {
    if (error.kind() != index::IndexError::Kind::damaged) throw;
    location.index().report_damage(error);
    update(location, options, {});
    work();
  }
}

}  // namespace tarnwick::cli
