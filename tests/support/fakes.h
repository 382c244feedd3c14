// Collaborators in memory, recording how they are called; shared by all tests of the component.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tarnwick/storage/answers.h"
#include "tarnwick/workers/context_builder.h"

namespace tarnwick::testing {

/// Plain strings of anything that holds texts.
std::vector<std::string> strings(const std::vector<Text>& texts);

/// A symbol in one line: an exported function of file 1 unless said otherwise.
SymbolFields fields(std::int64_t id, const std::string& name, const std::string& kind = "function");
SymbolPtr symbol(std::int64_t id, const std::string& name, const std::string& kind = "function");

/// An index in memory. Symbols keep the order in which they were added; `calls` lists every question.
class FakeRepository final : public Repository {
 public:
  struct Covering {
    std::string test;
    std::map<std::string, double> rank_by_source;
  };

  /// Adds the symbol under `path`; the file id is the position of the path among those added, from 1.
  SymbolPtr add(SymbolFields symbol_fields, const std::string& path);
  /// Makes calls of `operation` throw `error` from now on.
  void fail(const std::string& operation, std::exception_ptr error) {
    failures_[operation] = std::move(error);
  }
  std::size_t count(const std::string& operation) const;

  SymbolMatches search_symbols(const Text& pattern, std::int64_t limit, bool source_only) const override;
  std::optional<Component> get_component_by_name(const Text& name) const override;
  std::vector<File> get_files_by_component(std::int64_t component_id) const override;
  std::shared_ptr<const PathMap> get_file_paths_batch(const std::vector<SymbolPtr>& symbols) const override;
  std::shared_ptr<const PathSet> test_paths(const std::vector<Text>& paths) const override;
  std::shared_ptr<const IdMap<SymbolPtr>> symbols_with_paths(
      const std::vector<std::int64_t>& ids) const override;
  std::shared_ptr<const TestRecords> find_covering_tests(const std::vector<Text>& paths) const override;
  std::vector<SymbolPtr> get_symbols_by_file(std::int64_t file_id) const override;
  References get_references(const Text& fqn) const override;
  SymbolPtr get_symbol_by_fqn(const Text& fqn) const override;
  std::shared_ptr<const IdMap<OrderKey>> production_fan_in(
      const std::vector<std::int64_t>& ids) const override;

  std::map<std::string, std::pair<std::int64_t, std::vector<std::int64_t>>> components;  ///< id, file ids
  std::map<std::int64_t, OrderKey> fan_in;
  std::vector<std::string> test_files;
  std::vector<Covering> covering;
  std::map<std::string, std::vector<ReferencePtr>> references;
  mutable std::vector<std::string> calls;

 private:
  void called(const std::string& operation, const std::string& arguments) const;

  std::vector<SymbolPtr> symbols_;
  std::map<std::int64_t, std::string> path_by_symbol_;
  std::vector<std::string> paths_;
  std::map<std::string, std::exception_ptr> failures_;
};

/// Splits at blanks: a word with an uppercase letter or an underscore is a name, the lowercase words are
/// terms.
class FakeTokenizer final : public Tokenizer {
 public:
  std::vector<Text> query_names(const Text& task) const override;
  std::shared_ptr<const QueryTerms> query_terms(const Text& task) const override;
  /// Whether "test" or "tests" is a term.
  bool is_test_query(const QueryTerms& terms) const override;

  mutable std::vector<std::string> calls;
};

class FakeRetriever final : public HybridRetriever {
 public:
  struct Ranked {
    std::int64_t id;
    std::string kind;
    double score;
  };
  RetrievalResult retrieve(const Text& task, std::int64_t limit, bool include_tests) const override;

  std::vector<Ranked> ranked;
  OptionalText note;
  mutable std::vector<std::string> calls;
};

class FakeLogger final : public Logger {
 public:
  void warning(std::string_view message, std::string_view argument, const std::exception_ptr& error) override;
  std::vector<std::string> records;  ///< "message | argument | what"
};

/// A folder of a test, removed with everything in it.
class TempFolder {
 public:
  TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder();

  /// Writes a file, with its folders; answers its absolute path.
  std::string write(const std::string& path, std::string_view bytes) const;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace tarnwick::testing
