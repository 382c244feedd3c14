// tarnwick status: what the index holds.
#include <spdlog/fmt/chrono.h>
#include <spdlog/fmt/fmt.h>

#include <algorithm>
#include <ctime>
#include <iostream>
#include <memory>

#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/indexed_repository.h"
#include "index/errors.h"
#include "output/terminal.h"
#include "text/surrogates.h"

namespace tarnwick::cli {
namespace {

constexpr std::size_t MOST_COMPONENTS = 20;
constexpr double MEBIBYTE = 1024.0 * 1024.0;

constexpr const char* HELP =
    "Examples:\n"
    "  tarnwick status              what the index of the repository around the working directory holds\n"
    "  tarnwick status --skipped    every file that was left out, and why\n"
    "\n"
    "Links, files over 1 MiB, binary, minified, generated and vendored files are left out, and what git "
    "ignores.";

struct StatusOptions {
  RepositoryOptions repository;
  bool skipped = false;
};

std::string shown(std::string_view text) {
  return output::visible_on_one_line(text::replace_surrogates(text));
}

std::string time_of(std::int64_t seconds) {
  return fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::localtime(static_cast<std::time_t>(seconds)));
}

void print_languages(const std::vector<index::LanguageStatus>& languages) {
  std::cout << fmt::format("\n{:<14}{:>9}{:>10}{:>12}{:>15}\n", "Language", "files", "symbols", "references",
                           "syntax errors");
  for (const auto& language : languages) {
    std::cout << fmt::format("{:<14}{:>9}{:>10}{:>12}{:>15}\n", language.language, language.files,
                             language.symbols, language.references, language.with_errors);
  }
}

void print_components(const std::vector<index::ComponentStatus>& components) {
  if (components.empty()) return;
  std::cout << "\nComponents\n";
  const std::size_t listed = std::min(components.size(), MOST_COMPONENTS);
  for (std::size_t i = 0; i < listed; ++i) {
    const auto& [name, path, files] = components[i];
    std::cout << fmt::format("  {} ({}), files: {}\n", shown(name), path.empty() ? "." : shown(path), files);
  }
  if (listed < components.size()) std::cout << fmt::format("  and {} more\n", components.size() - listed);
}

/// Languages of the user's own, and what is wrong with those that are left out.
void print_own_languages(const languages::OwnLanguages& own) {
  if (own.languages.empty() && own.problems.empty()) return;
  std::cout << "\nOwn languages\n";
  for (const auto& language : own.languages) {
    std::cout << fmt::format("  {}: {}{}{}\n", shown(language->name), shown(language->extensions),
                             shown(language->file_names), shown(language->interpreters));
  }
  for (const auto& problem : own.problems) std::cout << fmt::format("  left out: {}\n", shown(problem));
}

void print_status(const Location& location, const index::IndexStatus& status) {
  std::cout << fmt::format("Repository  {}\nIndex       {}\n", shown(location.root.string()),
                           shown(location.index().file().string()));
  std::cout << fmt::format("Size        {:.1f} MiB for {:.1f} MiB of source text\n",
                           static_cast<double>(status.index_bytes) / MEBIBYTE,
                           static_cast<double>(status.source_bytes) / MEBIBYTE);
  const std::string commit =
      status.git_head ? fmt::format(", commit {}", status.git_head->substr(0, 12)) : "";
  std::cout << fmt::format("Indexed     {}{}\n",
                           status.indexed_at ? time_of(*status.indexed_at) : "not completely yet", commit);
  print_languages(status.languages);
  print_own_languages(extractor().own());
  print_components(status.components);
  if (!status.skipped.empty()) std::cout << "\nLeft out\n";
  for (const auto& [reason, files] : status.skipped) std::cout << fmt::format("  {}: {}\n", reason, files);
}

void run(const StatusOptions& options) {
  const Location location = locate(options.repository);
  try {
    const auto snapshot = location.index().snapshot();
    if (!options.skipped) {
      print_status(location, snapshot->status());
      return;
    }
    for (const auto& [path, reason] : snapshot->skipped_files()) {
      std::cout << fmt::format("{}: {}\n", shown(path), reason);
    }
  } catch (const index::IndexError& error) {
    if (error.kind() != index::IndexError::Kind::missing) throw;
    throw Failure(error.what(), {"tarnwick index makes one."});
  }
}

}  // namespace

void declare_status(CLI::App& command) {
  const auto options = std::make_shared<StatusOptions>();
  command.footer(HELP);
  add_repository_options(command, options->repository);
  command.add_flag("--skipped", options->skipped, "List the files that were left out, and why");
  command.callback([options] { run(*options); });
}

}  // namespace tarnwick::cli
