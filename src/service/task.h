// The pack of a task.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "service/requests.h"
#include "service/view.h"
#include "tarnwick/workers/context_pack.h"

namespace tarnwick::service {

/// What could not be done as asked; valid UTF-8.
struct Remark {
  std::string_view field;  ///< of the request, that it is about; empty: of none
  std::string text;
};

struct TaskReport {
  ContextPack pack;
  std::vector<Remark> remarks;  ///< what the pack's own notes do not say
};

/// Throws UnknownName, and errors of the index.
TaskReport pack_of_task(const TaskRequest& request, const Session& session);

}  // namespace tarnwick::service
