// A directory of files that come and go, and its index.
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

#include "indexing/indexer.h"
#include "repository/store.h"
#include "support/fakes.h"
#include "support/toy_language.h"

namespace tarnwick::testing {

class IndexedTree {
 public:
  std::filesystem::path root() const { return folder() / "tree"; }
  std::filesystem::path index_file() const { return folder() / "cache" / "index.db"; }

  IndexedTree() { std::filesystem::create_directory(root()); }

  void write(const std::string& path, std::string_view content) const {
    folder_.write("tree/" + path, content);
  }
  void remove(const std::string& path) const { std::filesystem::remove(root() / path); }

  indexing::IndexReport update(const std::function<void(indexing::IndexOptions&)>& change = {},
                               indexing::Progress* progress = nullptr) const {
    indexing::IndexOptions options{.root = root(), .index = &store_.index(), .extractor = &extractor_};
    if (change) change(options);
    return indexing::update_index(options, progress);
  }
  index::Index& index() const { return store_.index(); }
  repository::StoredRepository open() const { return store_.open(); }

 private:
  std::filesystem::path folder() const { return std::filesystem::canonical(folder_.path()); }

  TempFolder folder_;
  ToyExtractor extractor_;
  mutable repository::Store store_{index_file(), root()};
};

}  // namespace tarnwick::testing
