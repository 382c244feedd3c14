// What is indexed of a repository.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "service/requests.h"
#include "service/view.h"

namespace tarnwick::service {

struct StatusReport {
  std::string repository;
  std::filesystem::path root;
  Indexing indexing;
  std::optional<index::IndexStatus> index;         ///< absent before there is one
  std::vector<index::ComponentStatus> components;  ///< the largest, most files first, then by path
};

/// Throws errors of the index.
StatusReport show_status(const StatusRequest& request, const Session& session);

}  // namespace tarnwick::service
