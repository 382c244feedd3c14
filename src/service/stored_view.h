// The index file as a view.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "repository/stored_repository.h"
#include "retrieval/index_retriever.h"
#include "service/view.h"

namespace tarnwick::service {

/// One state of the index of the files at `root`. One thread at a time. Errors: IndexError.
class StoredView : public View {
 public:
  /// Over a connection inside a read transaction.
  StoredView(std::shared_ptr<index::Connection> connection, const std::filesystem::path& root)
      : stored_(std::move(connection), root), ranking_(stored_) {}

  const Repository& repository() const override { return stored_; }
  const HybridRetriever* retriever() const override { return &ranking_; }
  std::vector<SymbolPtr> symbols_by_fqn(const Text& fqn) const override {
    return stored_.symbols_by_fqn(fqn);
  }
  std::vector<std::string> components_near(std::string_view name) const override {
    return stored_.components_near(name);
  }
  std::optional<index::IndexStatus> status() const override {
    return index::index_status(stored_.connection());
  }

 protected:
  const retrieval::IndexRetriever& ranking() const { return ranking_; }

 private:
  repository::StoredRepository stored_;
  retrieval::IndexRetriever ranking_;
};

}  // namespace tarnwick::service
