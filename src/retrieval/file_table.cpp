#include "retrieval/file_table.h"

#include <algorithm>
#include <array>

namespace tarnwick::retrieval {
namespace {

using std::string_view_literals::operator""sv;

constexpr double PERIPHERY_PLACE = 0.5;

constexpr auto PERIPHERY = std::to_array(
    {"bench"sv,       "benches"sv,     "benchmark"sv, "benchmarks"sv, "contrib"sv, "demo"sv,
     "demos"sv,       "deps"sv,        "dist"sv,      "doc"sv,        "docs"sv,    "e2e"sv,
     "example"sv,     "examples"sv,    "fixtures"sv,  "fuzz"sv,       "fuzzing"sv, "node_modules"sv,
     "playground"sv,  "playgrounds"sv, "sample"sv,    "samples"sv,    "scripts"sv, "third-party"sv,
     "third_party"sv, "thirdparty"sv,  "tools"sv,     "vendor"sv});

}  // namespace

FileTable::FileTable(index::Connection& connection) {
  SQLite::Statement& query =
      connection.prepare("SELECT id, path, is_test FROM files WHERE is_source AND skip IS NULL");
  while (query.executeStep()) {
    const std::int64_t id = query.getColumn(0).getInt64();
    RankedFile file{query.getColumn(1).getString(), query.getColumn(2).getInt() != 0};
    file.place = (file.is_test ? TEST_PLACE : 1) * (is_periphery(file.path) ? PERIPHERY_PLACE : 1);
    const auto entry = files_.emplace(id, std::move(file)).first;
    ids_.emplace(entry->second.path, id);
  }
  query.reset();
}

const RankedFile* FileTable::find(std::int64_t id) const {
  const auto found = files_.find(id);
  return found == files_.end() ? nullptr : &found->second;
}

std::optional<std::int64_t> FileTable::id_of(const std::string& path) const {
  const auto found = ids_.find(path);
  return found == ids_.end() ? std::nullopt : std::optional(found->second);
}

bool is_periphery(std::string_view path) {
  for (std::size_t at = 0, end = path.find('/'); end != std::string_view::npos;
       at = end + 1, end = path.find('/', at))
    if (std::ranges::find(PERIPHERY, path.substr(at, end - at)) != PERIPHERY.end()) return true;
  return false;
}

}  // namespace tarnwick::retrieval
