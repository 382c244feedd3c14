// The repositories that are served.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "index/errors.h"
#include "index/index_status.h"
#include "mcp/call.h"
#include "tarnwick/storage/repository.h"
#include "tarnwick/workers/retrieval.h"

namespace tarnwick::mcp {

/// One state of a repository's index, of one request.
class View {
 public:
  View() = default;
  View(const View&) = delete;
  View& operator=(const View&) = delete;
  virtual ~View() = default;

  virtual const Repository& repository() const = 0;
  /// Null: symbols are found by name alone.
  virtual const HybridRetriever* retriever() const = 0;
  /// All symbols of that qualified name.
  virtual std::vector<SymbolPtr> symbols_by_fqn(const Text& fqn) const = 0;
  /// Names and paths of components that resemble `name`, best first.
  virtual std::vector<std::string> components_near(std::string_view name) const = 0;
  /// Nothing before there is an index.
  virtual std::optional<index::IndexStatus> status() const = 0;
};

/// How far the index of a repository is. Taken before a view of it, which then never holds less.
struct Indexing {
  bool in_progress = false;
  std::int64_t progress = 100;         ///< percent; less than 100 while in progress
  bool whole = true;                   ///< there was a whole index at some time
  std::optional<std::string> failure;  ///< why the index could not be brought up to date
};

/// A repository that is served. Safe to share between threads.
class Source {
 public:
  Source() = default;
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  virtual ~Source() = default;

  /// Unique among the served ones.
  virtual const std::string& name() const = 0;
  /// Without symbolic links.
  virtual const std::filesystem::path& root() const = 0;
  /// Waits until changes of files that were made before the call are indexed, but neither for a first
  /// indexing nor long for any other, and answers how far the index is then. Throws Cancelled and TimedOut.
  virtual Indexing refresh(const Call& call) = 0;
  /// The index as it is. Its queries end early, with an error, once `call` is over. Never null.
  virtual std::unique_ptr<View> view(const Call& call) = 0;
  /// Rebuilds the index in the background, after a query has found it damaged.
  virtual void renew(const index::IndexError& error) = 0;
};

using Sources = std::vector<std::unique_ptr<Source>>;

}  // namespace tarnwick::mcp
