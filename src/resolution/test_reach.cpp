#include "resolution/test_reach.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "facts/import_keys.h"
#include "text/lowercase.h"

namespace tarnwick::resolution {
namespace {

/// Less than this, and a test reaches a file by the common names of its symbols alone.
constexpr double MIN_REACH = 0.5;

struct Reach {
  std::map<std::int64_t, double> symbols;  ///< by id, how surely the test uses it
  bool imports = false;

  double symbol_count() const {
    double sum = 0;
    for (const auto& [id, weight] : symbols) sum += weight;
    return sum;
  }
  bool counts() const { return imports || symbol_count() >= MIN_REACH; }
};

/// The name of a test file without what marks it as one, lowercased: `test_parser.py`, `ParserTest.java` →
/// parser.
std::string tested_name(std::string_view path) {
  const std::vector<std::string_view> parts = facts::file_parts(path);
  std::string name = parts.empty() ? std::string() : text::lowercase(parts.back());
  constexpr std::array<std::string_view, 8> ENDS = {"_unittest", "_tests", "_test", "_spec",
                                                    ".test",     ".spec",  "tests", "test"};
  constexpr std::array<std::string_view, 3> STARTS = {"test_", "tests_", "test-"};
  for (const std::string_view end : ENDS) {
    if (name.size() > end.size() && name.ends_with(end)) {
      name.resize(name.size() - end.size());
      break;
    }
  }
  for (const std::string_view start : STARTS) {
    if (name.size() > start.size() && name.starts_with(start)) return name.substr(start.size());
  }
  return name;
}

/// 0: named after the file; 1: the name holds the file's as a whole part; 2: neither.
int name_distance(std::string_view test, std::string_view source) {
  const std::vector<std::string_view> parts = facts::file_parts(source);
  if (parts.empty()) return 2;
  std::string name = text::lowercase(parts.back());
  name.erase(0, std::min(name.find_first_not_of('_'), name.size()));
  const std::string tested = tested_name(test);
  if (tested == name) return 0;
  const std::size_t at = tested.find(name);
  if (name.empty() || at == std::string::npos) return 2;
  const auto is_letter = [&](std::size_t i) {
    return i < tested.size() && tested[i] >= 'a' && tested[i] <= 'z';
  };
  return (at > 0 && is_letter(at - 1)) || is_letter(at + name.size()) ? 2 : 1;
}

class RankedTest final : public FileTest {
 public:
  RankedTest(std::size_t rank, Text path) : rank_(static_cast<double>(rank)), path_(std::move(path)) {}
  OrderKey rank() const override { return {.number = rank_}; }
  Text path() const override { return path_; }

 private:
  double rank_;
  Text path_;
};

class Record final : public TestRecord {
 public:
  void add(const Text& source, std::shared_ptr<const FileTest> test) {
    by_source_.emplace(source, std::move(test));
  }
  std::shared_ptr<const FileTest> alone(const Text& path) const override {
    const auto found = by_source_.find(path);
    return found == by_source_.end() ? nullptr : found->second;
  }

 private:
  std::unordered_map<Text, std::shared_ptr<const FileTest>, TextHash, TextEqual> by_source_;
};

class Records final : public TestRecords {
 public:
  Record& of(const std::string& test) { return records_[test]; }
  void walk(const std::function<void(const TestRecord&)>& visit) const override {
    for (const auto& [test, record] : records_) visit(record);
  }

 private:
  std::map<std::string, Record> records_;
};

/// What each test file (by id) reaches of each source file (by id).
using Reaches = std::map<std::int64_t, std::map<std::int64_t, Reach>>;

/// Source files by id, with their paths.
using Sources = std::map<std::int64_t, std::string_view>;

void reach_by_use(const Resolver& resolver, const Sources& sources, Reaches& reaches) {
  std::vector<std::int64_t> symbols;
  for (const auto& [id, path] : sources)
    for (std::int64_t position = 1; position <= resolver.reader().files().find(id)->symbols; ++position)
      symbols.push_back(index::symbol_id(id, position));
  for (const ResolvedUse& use : resolver.uses_of(symbols, Resolver::From::tests)) {
    double& weight = reaches[index::file_of(use.target)][use.file].symbols[use.target];
    weight = std::max(weight, use.weight);
  }
}

void reach_by_import(const Resolver& resolver, const Sources& sources, Reaches& reaches) {
  for (const auto& [source, path] : sources)
    for (const std::int64_t test : *resolver.test_importers_of(source)) reaches[source][test].imports = true;
}

void rank_tests(std::string_view source, const std::map<std::int64_t, Reach>& tests,
                const index::FileTable& files, Records& records) {
  using Key = std::tuple<int, double, bool, std::size_t, std::string>;
  std::vector<Key> keys;
  for (const auto& [id, reach] : tests) {
    const index::IndexedFile* const test = files.find(id);
    if (test == nullptr || !test->is_test || !reach.counts()) continue;
    keys.emplace_back(name_distance(test->path, source), -reach.symbol_count(), !reach.imports,
                      path_distance(test->path, source), test->path);
  }
  std::sort(keys.begin(), keys.end());
  for (std::size_t rank = 0; rank < keys.size(); ++rank) {
    const std::string& test = std::get<std::string>(keys[rank]);
    records.of(test).add(Text(source), std::make_shared<RankedTest>(rank, test));
  }
}

}  // namespace

std::size_t path_distance(std::string_view a, std::string_view b) {
  std::size_t shared = 0;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()) && a[i] == b[i]; ++i) {
    if (a[i] == '/') shared = i + 1;
  }
  const auto directories = [&](std::string_view path) {
    return static_cast<std::size_t>(
        std::count(path.begin() + static_cast<std::ptrdiff_t>(shared), path.end(), '/'));
  };
  return directories(a) + directories(b);
}

std::shared_ptr<const TestRecords> covering_tests(const Resolver& resolver, const std::vector<Text>& paths) {
  const index::FileTable& files = resolver.reader().files();
  Sources sources;
  for (const Text& path : paths)
    if (const std::int64_t id = files.id_of(path); id != 0) sources.emplace(id, files.find(id)->path);
  Reaches reaches;
  reach_by_use(resolver, sources, reaches);
  reach_by_import(resolver, sources, reaches);
  auto records = std::make_shared<Records>();
  for (const auto& [source, reached] : reaches) rank_tests(sources.at(source), reached, files, *records);
  return records;
}

}  // namespace tarnwick::resolution
