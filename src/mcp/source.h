// The repositories that are served.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "mcp/call.h"
#include "service/view.h"

namespace tarnwick::mcp {

using service::Indexing;
using service::View;

/// A repository that is served. Safe to share between threads.
class Source {
 public:
  Source() = default;
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  virtual ~Source() = default;

  /// Unique among the served ones.
  virtual const std::string& name() const = 0;
  /// Without symbolic links.
  virtual const std::filesystem::path& root() const = 0;
  /// Waits until changes of files that were made before the call are indexed, but neither for a first
  /// indexing nor long for any other, and answers how far the index is then. Throws Cancelled and TimedOut.
  virtual Indexing refresh(const Call& call) = 0;
  /// The index as it is. Its queries end early, with an error, once `call` is over. Never null.
  virtual std::unique_ptr<View> view(const Call& call) = 0;
  /// Rebuilds the index in the background, after a query has found it damaged.
  virtual void renew() = 0;
};

using Sources = std::vector<std::unique_ptr<Source>>;

}  // namespace tarnwick::mcp
