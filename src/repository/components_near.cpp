#include <algorithm>
#include <array>
#include <numeric>
#include <set>
#include <tuple>
#include <unordered_map>
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

// A member of StoredRepository, apart from the others for its own measure of likeness.
std::vector<std::string> StoredRepository::components_near(std::string_view name, std::size_t limit) const {
  const std::string wanted = text::lowercase(name).substr(0, MAX_COMPARED);
  std::set<std::tuple<bool, std::size_t, std::string>> near;
  const auto compare = [&](std::string_view asked, const std::string& candidate) {
    if (candidate.empty()) return;
    const std::string lower = text::lowercase(asked).substr(0, MAX_COMPARED);
    const bool inside = !wanted.empty() && lower.find(wanted) != std::string::npos;
    const std::size_t distance = edit_distance(wanted, lower);
    if (inside || distance <= std::max<std::size_t>(2, wanted.size() / 3))
      near.emplace(!inside, distance, candidate);
  };
  const std::vector<index::StoredComponent> components = snapshot_->components();
  std::unordered_map<std::string_view, int> shared;
  for (const index::StoredComponent& component : components) ++shared[component.name];
  for (const auto& [id, component_name, path] : components) {
    // One that shares its name is told by its path, however it was asked for.
    compare(component_name, shared[component_name] == 1 ? component_name : path);
    if (component_name != path) compare(path, path);
  }
  std::unordered_set<std::string_view> seen;
  std::vector<std::string> names;
  for (const auto& [outside, distance, candidate] : near)
    if (names.size() < limit && seen.insert(candidate).second) names.push_back(candidate);
  return names;
}

}  // namespace tarnwick::repository
