#include <unordered_set>

#include "tarnwick/workers/context_builder.h"

namespace tarnwick {
namespace {

void append_escaped(std::string& json, std::string_view text) {
  constexpr std::string_view hex = "0123456789abcdef";
  constexpr std::string_view named = "\"\"\\\\\nn\rr\tt\bb\ff";  // a character, then its letter
  json += '"';
  for (const char c : text) {
    std::size_t at = 0;
    while (at < named.size() && named[at] != c) at += 2;
    if (at < named.size()) {
      json += {'\\', named[at + 1]};
    } else if (static_cast<unsigned char>(c) < 0x20) {
      json += {'\\',
               'u',
               '0',
               '0',
               hex[static_cast<unsigned char>(c) >> 4U],
               hex[static_cast<unsigned char>(c) & 0xFU]};
    } else {
      json += c;
    }
  }
  json += '"';
}

/// The text that a row is costed on. Its layout is part of what a token budget promises, so it does not
/// follow whatever the serialiser of a face does.
std::string json_text(const TestRow& row) {
  std::string json = "{\"file\": ";
  append_escaped(json, row.file);
  json += ", \"for\": ";
  append_escaped(json, row.source);
  return json + "}";
}

}  // namespace

std::vector<Text> ContextBuilder::_tested_sources(const std::vector<RankedSymbol>& ranked) const {
  std::vector<Text> paths;
  std::unordered_set<std::string_view> seen;
  for (const RankedSymbol& item : ranked) {
    if (has_text(item.file_path) && seen.insert(item.file_path->view()).second)
      paths.push_back(*item.file_path);
  }
  const auto test_files = repository_->test_paths(paths);
  std::erase_if(paths, [&](const Text& path) { return test_files->contains(path); });
  if (paths.size() > TESTED_FILES) paths.resize(TESTED_FILES);
  return paths;
}

std::vector<ContextBuilder::CostedRow> ContextBuilder::_test_rows(const std::vector<Text>& sources,
                                                                  CoveringTests& tests) {
  std::vector<CostedRow> rows;
  std::unordered_set<Text, TextHash, TextEqual> listed;
  for (const Text& source : sources) {
    for (const Text& test : tests.of(source)) {
      if (!listed.insert(test).second) continue;
      const TestRow row{test, source};
      rows.push_back({row, estimate_tokens(json_text(row))});
    }
  }
  return rows;
}

}  // namespace tarnwick
