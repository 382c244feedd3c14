#include "tarnwick/workers/covering_tests.h"

#include <algorithm>
#include <exception>
#include <string>
#include <unordered_set>

#include "workers/context_builder/stable_order.h"

namespace tarnwick {
namespace {

constexpr std::string_view UNREADABLE = "context: the tests of %s could not be read";

std::vector<Text> not_looked_up(const std::vector<OptionalText>& paths, const FoundTests& found) {
  std::vector<Text> candidates;
  std::unordered_set<std::string_view> seen;
  for (const OptionalText& path : paths) {
    if (has_text(path) && found.find(*path) == nullptr && seen.insert(path->view()).second) {
      candidates.push_back(*path);
    }
  }
  return candidates;
}

std::string joined(const std::vector<Text>& paths) {
  std::string text;
  for (const Text& path : paths) {
    if (!text.empty()) text += ", ";
    text += path.view();
  }
  return text;
}

struct RankedTest {
  OrderKey rank;
  std::shared_ptr<const FileTest> test;
};

/// The tests that reach `source`, best first, at most `per_file`. Every rank is read before any path is.
std::vector<Text> closest_tests(const TestRecords& records, const Text& source, std::int64_t per_file) {
  std::vector<std::shared_ptr<const FileTest>> reaching;
  records.walk([&](const TestRecord& record) {
    if (auto test = record.alone(source)) reaching.push_back(std::move(test));
  });
  std::vector<RankedTest> ranked;
  ranked.reserve(reaching.size());
  for (auto& test : reaching) ranked.push_back({test->rank(), std::move(test)});
  stable_order(ranked, [](const RankedTest& a, const RankedTest& b) { return a.rank < b.rank; });

  std::vector<Text> paths;
  for (const RankedTest& item : ranked) {
    if (static_cast<std::int64_t>(paths.size()) >= per_file) break;
    paths.push_back(item.test->path());
  }
  return paths;
}

}  // namespace

const std::vector<Text>* FoundTests::find(std::string_view path) const {
  const auto at = by_path_.find(path);
  return at == by_path_.end() ? nullptr : &at->second->second;
}

void FoundTests::set(const Text& path, std::vector<Text> tests) {
  if (const auto at = by_path_.find(path); at != by_path_.end()) {
    at->second->second = std::move(tests);
    return;
  }
  Item& item = items_.emplace_back(path, std::move(tests));
  by_path_.emplace(item.first.view(), &item);
}

void CoveringTests::look_up(const std::vector<OptionalText>& paths) {
  const std::vector<Text> candidates = not_looked_up(paths, found);
  if (candidates.empty() || failed) return;

  std::vector<Text> sources;
  std::shared_ptr<const TestRecords> records;
  try {
    const auto test_files = repository->test_paths(candidates);
    test_files->walk([&](const Text& path) { keep(path, {}); });
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(sources),
                 [&](const Text& path) { return !test_files->contains(path); });
    if (sources.empty()) return;
    records = repository->find_covering_tests(sources);
  } catch (const std::exception&) {
    if (logger != nullptr) logger->warning(UNREADABLE, joined(candidates), std::current_exception());
    failed = true;
    return;
  }
  for (const Text& source : sources) keep(source, closest_tests(*records, source, per_file));
}

const std::vector<Text>& CoveringTests::of(const OptionalText& path) {
  static const std::vector<Text> none;
  if (!has_text(path)) return none;
  look_up({path});
  const std::vector<Text>* tests = failed ? nullptr : found.find(*path);
  return tests == nullptr ? none : *tests;
}

}  // namespace tarnwick
