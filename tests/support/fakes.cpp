#include "support/fakes.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <unordered_map>

#include "text/lowercase.h"

namespace tarnwick::testing {
namespace {

struct FakeHit final : Hit {
  explicit FakeHit(FakeRetriever::Ranked from) : ranked_(std::move(from)) {}
  double score() const override { return ranked_.score; }
  std::int64_t symbol_id() const override { return ranked_.id; }
  Text symbol_kind() const override { return ranked_.kind; }

 private:
  FakeRetriever::Ranked ranked_;
};

std::string joined(const std::vector<Text>& texts) {
  std::string all;
  for (const Text& text : texts) all += (all.empty() ? "" : ",") + std::string(text.view());
  return all;
}

template <class Numbers>
std::string joined_numbers(const Numbers& numbers) {
  std::string all;
  for (const auto number : numbers) all += (all.empty() ? "" : ",") + std::to_string(number);
  return all;
}

std::vector<std::string> words_of(const Text& task) {
  std::istringstream stream{std::string(task.view())};
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

/// LIKE matching with "%" alone, ignoring case.
bool like(std::string_view name, std::string_view pattern) {
  if (pattern.empty()) return name.empty();
  if (pattern[0] != '%')
    return !name.empty() && name[0] == pattern[0] && like(name.substr(1), pattern.substr(1));
  return like(name, pattern.substr(1)) || (!name.empty() && like(name.substr(1), pattern));
}

}  // namespace

std::vector<std::string> strings(const std::vector<Text>& texts) {
  return {texts.begin(), texts.end()};
}

SymbolFields fields(std::int64_t id, const std::string& name, const std::string& kind) {
  return {.id = id, .file_id = 1, .name = name, .fqn = "pkg." + name, .kind = kind, .is_export = true};
}

SymbolPtr symbol(std::int64_t id, const std::string& name, const std::string& kind) {
  return make_symbol(fields(id, name, kind));
}

SymbolPtr FakeRepository::add(SymbolFields symbol_fields, const std::string& path) {
  auto at = std::find(paths_.begin(), paths_.end(), path);
  if (at == paths_.end()) at = paths_.insert(paths_.end(), path);
  symbol_fields.file_id = at - paths_.begin() + 1;
  if (symbol_fields.id) path_by_symbol_[*symbol_fields.id] = path;
  return symbols_.emplace_back(make_symbol(std::move(symbol_fields)));
}

void FakeRepository::called(const std::string& operation, const std::string& arguments) const {
  calls.push_back(operation + "(" + arguments + ")");
  const auto failure = failures_.find(operation);
  if (failure != failures_.end()) std::rethrow_exception(failure->second);
}

std::size_t FakeRepository::count(const std::string& operation) const {
  return static_cast<std::size_t>(std::count_if(calls.begin(), calls.end(), [&](const std::string& call) {
    return call.starts_with(operation + "(");
  }));
}

SymbolMatches FakeRepository::search_symbols(const Text& pattern, std::int64_t limit,
                                             bool source_only) const {
  called("search_symbols",
         std::string(pattern.view()) + "," + std::to_string(limit) + (source_only ? ",source" : ""));
  SymbolMatches matches;
  for (const SymbolPtr& symbol : symbols_) {
    if (!like(text::lowercase(symbol->name()), text::lowercase(pattern))) continue;
    if (++matches.total <= limit) matches.symbols.push_back(symbol);
  }
  matches.truncated = matches.total > limit;
  return matches;
}

std::optional<Component> FakeRepository::get_component_by_name(const Text& name) const {
  called("get_component_by_name", std::string(name.view()));
  const auto found = components.find(std::string(name.view()));
  if (found == components.end()) return std::nullopt;
  return Component{found->second.first};
}

std::vector<File> FakeRepository::get_files_by_component(std::int64_t component_id) const {
  called("get_files_by_component", std::to_string(component_id));
  std::vector<File> files;
  for (const auto& [name, component] : components) {
    for (const std::int64_t id :
         component.first == component_id ? component.second : std::vector<std::int64_t>{}) {
      files.push_back({id});
    }
  }
  return files;
}

std::shared_ptr<const PathMap> FakeRepository::get_file_paths_batch(
    const std::vector<SymbolPtr>& symbols) const {
  auto answer = std::make_shared<PathTable>();
  std::vector<std::int64_t> ids;
  for (const SymbolPtr& symbol : symbols) {
    ids.push_back(symbol->id().value_or(-1));
    const auto path = path_by_symbol_.find(ids.back());
    if (path != path_by_symbol_.end()) answer->add(path->first, path->second);
  }
  called("get_file_paths_batch", joined_numbers(ids));
  return answer;
}

std::shared_ptr<const PathSet> FakeRepository::test_paths(const std::vector<Text>& paths) const {
  called("test_paths", joined(paths));
  std::vector<Text> tests;
  std::copy_if(paths.begin(), paths.end(), std::back_inserter(tests), [&](const Text& path) {
    return std::count(test_files.begin(), test_files.end(), std::string(path.view())) > 0;
  });
  return std::make_shared<PathList>(std::move(tests));
}

std::shared_ptr<const IdMap<SymbolPtr>> FakeRepository::symbols_with_paths(
    const std::vector<std::int64_t>& ids) const {
  called("symbols_with_paths", joined_numbers(ids));
  std::unordered_map<std::int64_t, SymbolPtr> found;
  for (const SymbolPtr& symbol : symbols_) {
    if (symbol->id() && std::count(ids.begin(), ids.end(), *symbol->id()) > 0)
      found.emplace(*symbol->id(), symbol);
  }
  return std::make_shared<HashIdMap<SymbolPtr>>(std::move(found));
}

std::shared_ptr<const TestRecords> FakeRepository::find_covering_tests(const std::vector<Text>& paths) const {
  called("find_covering_tests", joined(paths));
  auto answer = std::make_shared<TestTable>();
  for (const Covering& item : covering) {
    for (const auto& [source, rank] : item.rank_by_source) answer->add(item.test, source, {rank});
  }
  return answer;
}

std::vector<SymbolPtr> FakeRepository::get_symbols_by_file(std::int64_t file_id) const {
  called("get_symbols_by_file", std::to_string(file_id));
  std::vector<SymbolPtr> found;
  std::copy_if(symbols_.begin(), symbols_.end(), std::back_inserter(found),
               [&](const SymbolPtr& symbol) { return symbol->file_id() == file_id; });
  return found;
}

References FakeRepository::get_references(const Text& fqn) const {
  called("get_references", std::string(fqn.view()));
  const auto found = references.find(std::string(fqn.view()));
  if (found == references.end()) return {};
  return {found->second, static_cast<std::int64_t>(found->second.size())};
}

SymbolPtr FakeRepository::get_symbol_by_fqn(const Text& fqn) const {
  called("get_symbol_by_fqn", std::string(fqn.view()));
  const auto found = std::find_if(symbols_.begin(), symbols_.end(),
                                  [&](const SymbolPtr& symbol) { return symbol->fqn() == fqn; });
  return found == symbols_.end() ? nullptr : *found;
}

std::shared_ptr<const IdMap<OrderKey>> FakeRepository::production_fan_in(
    const std::vector<std::int64_t>& ids) const {
  called("production_fan_in", joined_numbers(ids));
  return std::make_shared<HashIdMap<OrderKey>>(
      std::unordered_map<std::int64_t, OrderKey>(fan_in.begin(), fan_in.end()));
}

std::vector<Text> FakeTokenizer::query_names(const Text& task) const {
  calls.emplace_back("query_names");
  std::vector<Text> names;
  for (const std::string& word : words_of(task)) {
    if (word != text::lowercase(word) || word.find('_') != std::string::npos) names.emplace_back(word);
  }
  return names;
}

std::shared_ptr<const QueryTerms> FakeTokenizer::query_terms(const Text& task) const {
  calls.emplace_back("query_terms");
  std::vector<Text> terms;
  for (const std::string& word : words_of(task)) {
    if (word == text::lowercase(word)) terms.emplace_back(word);
  }
  return std::make_shared<TermList>(std::move(terms));
}

bool FakeTokenizer::is_test_query(const QueryTerms& terms) const {
  calls.emplace_back("is_test_query");
  return terms.contains("test") || terms.contains("tests");
}

RetrievalResult FakeRetriever::retrieve(const Text& task, std::int64_t limit, bool include_tests) const {
  calls.push_back(std::string(task.view()) + "," + std::to_string(limit) + (include_tests ? ",tests" : ""));
  RetrievalResult result{{}, note};
  for (const Ranked& item : ranked) result.hits.push_back(std::make_shared<FakeHit>(item));
  return result;
}

void FakeLogger::warning(std::string_view message, std::string_view argument,
                         const std::exception_ptr& error) {
  std::string what;
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& caught) {
    what = caught.what();
  }
  records.push_back(std::string(message) + " | " + std::string(argument) + " | " + what);
}

TempFolder::TempFolder() : path_((std::filesystem::temp_directory_path() / "tarnwick-test-XXXXXX").string()) {
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder " + path_);
}

TempFolder::~TempFolder() {
  std::error_code ignored;  // a destructor must not throw; what is left lies in the temporary folder
  std::filesystem::remove_all(path_, ignored);
}

std::string TempFolder::write(const std::string& path, std::string_view bytes) const {
  const std::filesystem::path full = std::filesystem::path(path_) / path;
  std::filesystem::create_directories(full.parent_path());
  std::ofstream(full, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return full.string();
}

}  // namespace tarnwick::testing
