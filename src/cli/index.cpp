// tarnwick index: reads what is missing or changed.
#include <spdlog/fmt/fmt.h>

#include <chrono>
#include <iostream>
#include <memory>

#include "cli/commands.h"
#include "cli/indexed_repository.h"

namespace tarnwick::cli {
namespace {

constexpr const char* HELP =
    "Examples:\n"
    "  tarnwick index               read what changed in the repository around the working directory\n"
    "  tarnwick index --full        read every file anew\n"
    "  tarnwick index --ignored     with the files that git ignores\n"
    "\n"
    "The context command does the same before it answers; index is for doing it ahead of time. The index "
    "lies in\n"
    "$XDG_CACHE_HOME/tarnwick (or ~/.cache/tarnwick), never inside the repository, and may be removed at any "
    "time.";

struct IndexOptions {
  RepositoryOptions repository;
  bool full = false;
};

std::string summary(const indexing::IndexReport& report, const std::filesystem::path& file, double seconds) {
  return fmt::format("{} files: {} added, {} changed, {} removed in {:.1f} s\n{}", report.files, report.added,
                     report.changed, report.removed, seconds, file.string());
}

void run(const IndexOptions& options) {
  const auto start = std::chrono::steady_clock::now();
  const Location location = locate(options.repository);
  const indexing::IndexReport report = update(location, options.repository, {.full = options.full});
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  over_sound_index(location, options.repository, [&] { require_indexed_files(location); });
  std::cout << summary(report, location.index().file(), took.count()) << '\n';
}

}  // namespace

void declare_index(CLI::App& command) {
  const auto options = std::make_shared<IndexOptions>();
  command.footer(HELP);
  add_repository_options(command, options->repository);
  add_ignored_option(command, options->repository);
  command.add_flag("--full", options->full, "Read every file anew");
  command.callback([options] { run(*options); });
}

}  // namespace tarnwick::cli
