#include <algorithm>
#include <array>
#include <numeric>
#include <tuple>
#include <unordered_set>

#include "repository/stored_repository.h"
#include "text/lowercase.h"

namespace tarnwick::repository {
namespace {

constexpr std::size_t MAX_COMPARED = 100;

/// The least number of bytes to put in, take out or replace to get from `a` to `b`, both at most MAX_COMPARED
/// long.
std::size_t edit_distance(std::string_view a, std::string_view b) {
  std::array<std::size_t, MAX_COMPARED + 1> row{};
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char c : a) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (c == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row[b.size()];
}

}  // namespace

std::vector<std::string> StoredRepository::components_near(std::string_view name, std::size_t limit) const {
  return connection_->guard([&] {
    const std::string wanted = text::lowercase(name).substr(0, MAX_COMPARED);
    // One that shares its name is told by its path, however it was asked for.
    SQLite::Statement& query = connection_->prepare(
        "SELECT name, iif(count(*) OVER (PARTITION BY name) = 1, name, path) FROM components "
        "UNION SELECT path, path FROM components WHERE name <> path");
    std::vector<std::tuple<bool, std::size_t, std::string>> near;
    while (query.executeStep()) {
      const std::string asked = query.getColumn(0).getString();
      std::string candidate = query.getColumn(1).getString();
      if (candidate.empty()) continue;
      const std::string lower = text::lowercase(asked).substr(0, MAX_COMPARED);
      const bool inside = !wanted.empty() && lower.find(wanted) != std::string::npos;
      const std::size_t distance = edit_distance(wanted, lower);
      if (inside || distance <= std::max<std::size_t>(2, wanted.size() / 3)) {
        near.emplace_back(!inside, distance, std::move(candidate));
      }
    }
    query.reset();
    std::sort(near.begin(), near.end());
    std::unordered_set<std::string> seen;
    std::erase_if(near, [&](const auto& entry) { return !seen.insert(std::get<std::string>(entry)).second; });
    if (near.size() > limit) near.resize(limit);
    std::vector<std::string> names;
    names.reserve(near.size());
    for (auto& entry : near) names.push_back(std::move(std::get<std::string>(entry)));
    return names;
  });
}

}  // namespace tarnwick::repository
