// What a request is answered from.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "index/index_status.h"
#include "tarnwick/logger.h"
#include "tarnwick/storage/repository.h"
#include "tarnwick/workers/context_builder.h"
#include "tarnwick/workers/retrieval.h"

namespace tarnwick::service {

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

/// All that one request is answered with.
struct Session {
  const View& view;
  std::string repository;      ///< its name, valid UTF-8
  std::filesystem::path root;  ///< of its files
  Indexing indexing = {};
  Logger* logger = nullptr;  ///< takes the builder's warnings; null: nobody does
  WeighedObserver on_weighed = nullptr;
};

}  // namespace tarnwick::service
