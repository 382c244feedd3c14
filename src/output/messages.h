// What the program has to say besides its results; all of it goes to standard error.
#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "tarnwick/logger.h"

namespace tarnwick::output {

/// A warning of the component as one line: `argument` stands where `message` has its "%s", what went wrong
/// behind.
std::string warning_text(std::string_view message, std::string_view argument,
                         const std::exception_ptr& error);

/// Sends the program's log to standard error, coloured where that is allowed.
void set_up_messages();

/// The component's warnings as messages of the program.
class MessageLogger final : public Logger {
 public:
  void warning(std::string_view message, std::string_view argument, const std::exception_ptr& error) override;
};

}  // namespace tarnwick::output
