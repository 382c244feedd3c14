// A directory of files that come and go, and its index.
#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <unistd.h>

#include "indexing/indexer.h"
#include "storage/stored_repository.h"
#include "toy_language.h"

namespace tarnwick::testing {

/// A new directory, removed with the object.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "tarnwick-XXXXXX").string();
    path_ = std::filesystem::canonical(::mkdtemp(name.data()));
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

class IndexedTree {
 public:
  std::filesystem::path root() const { return directory_.path() / "tree"; }
  std::filesystem::path index_file() const { return directory_.path() / "cache" / "index.db"; }

  IndexedTree() { std::filesystem::create_directory(root()); }

  void write(const std::string& path, std::string_view content) const {
    std::filesystem::create_directories((root() / path).parent_path());
    std::ofstream(root() / path, std::ios::binary) << content;
  }
  void remove(const std::string& path) const { std::filesystem::remove(root() / path); }

  indexing::IndexReport update(const std::function<void(indexing::IndexOptions&)>& change = {},
                               indexing::Progress* progress = nullptr) const {
    indexing::IndexOptions options{.root = root(), .index_file = index_file(), .extractor = &extractor_};
    if (change) change(options);
    return indexing::update_index(options, progress);
  }
  storage::StoredRepository open() const { return {index_file(), root()}; }

 private:
  TemporaryDirectory directory_;
  ToyExtractor extractor_;
};

}  // namespace tarnwick::testing
