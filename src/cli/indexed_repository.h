// The repository that a command is about, and its index.
#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "extraction/source_extractor.h"
#include "indexing/indexer.h"
#include "repository/store.h"

namespace tarnwick::cli {

/// The options that all commands over one repository share.
struct RepositoryOptions {
  std::string repo;   ///< empty: the repository around the working directory
  std::string index;  ///< empty: in the cache folder
  bool ignored = false;
};

/// Refuses an empty path: a script's variable without a value is not the working directory.
CLI::Validator named();

/// Adds --repo and --index. --ignored is apart: not every command reads files.
void add_repository_options(CLI::App& command, RepositoryOptions& options);
void add_ignored_option(CLI::App& command, RepositoryOptions& options);

/// Where the repository and its index lie.
struct Location {
  std::filesystem::path root;
  std::shared_ptr<repository::Store> store;

  index::Index& index() const { return store->index(); }
};

/// Finds them. Throws Failure for a directory that is none, and for the root directory and the home directory
/// unless `options` name them, and for an index file that holds something else.
Location locate(const RepositoryOptions& options);

/// Reads source files, those in languages of the user's own too.
const extraction::SourceExtractor& extractor();

struct UpdateLimits {
  bool full = false;  ///< read every file again
  /// How long past commits may be read; what is left is read by a later call. Absent: to the end.
  std::optional<std::chrono::milliseconds> history = std::nullopt;
};

/// Indexes what is missing or changed, showing how far it is. Throws Interrupted when a signal asked to stop;
/// the index is usable all the same.
indexing::IndexReport update(const Location& location, const RepositoryOptions& options,
                             const UpdateLimits& limits);

/// Throws Failure when the index holds no file at all.
void require_indexed_files(const Location& location);

/// Runs `work` over the index; when that turns out to be damaged, rebuilds it and runs `work` once more.
void over_sound_index(const Location& location, const RepositoryOptions& options,
                      const std::function<void()>& work);

}  // namespace tarnwick::cli
