#include "service/status.h"

#include <algorithm>

namespace tarnwick::service {
namespace {

constexpr std::size_t MAX_COMPONENTS = 20;

std::vector<index::ComponentStatus> largest(std::vector<index::ComponentStatus> components) {
  std::stable_sort(components.begin(), components.end(),
                   [](const auto& a, const auto& b) { return a.files > b.files; });
  if (components.size() > MAX_COMPONENTS) components.resize(MAX_COMPONENTS);
  return components;
}

}  // namespace

StatusReport show_status(const StatusRequest& /*request*/, const Session& session) {
  StatusReport report{session.repository, session.root, session.indexing, session.view.status(), {}};
  if (report.index) report.components = largest(report.index->components);
  return report;
}

}  // namespace tarnwick::service
