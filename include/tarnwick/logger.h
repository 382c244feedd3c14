// Where the component's warnings go.
#pragma once

#include <exception>
#include <string_view>

#include "tarnwick/interface.h"

namespace tarnwick {

/// The logging facility of the host. The component writes one kind of record: a warning about covering tests
/// that could not be read. Thread rule: implementations must be as thread-safe as the builders that share
/// them.
class Logger : public Interface {
 public:
  /// Writes one warning: `message` with its single "%s" standing for `argument`, and the caught `error`,
  /// never null. Template and argument come apart so that a facility that groups records by template can.
  /// What it throws reaches the caller of the build.
  virtual void warning(std::string_view message, std::string_view argument,
                       const std::exception_ptr& error) = 0;
};

}  // namespace tarnwick
