#include "output/messages.h"

#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <string>

#include "output/terminal.h"

namespace tarnwick::output {
namespace {

std::string what(const std::exception_ptr& error) {
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& known) {
    return known.what();
  } catch (...) {
    return "unknown error";
  }
}

}  // namespace

std::string warning_text(std::string_view message, std::string_view argument,
                         const std::exception_ptr& error) {
  std::string text(message);
  if (const std::size_t place = text.find("%s"); place != std::string::npos) text.replace(place, 2, argument);
  return visible(text) + ": " + visible(what(error));
}

void set_up_messages() {
  const auto mode = may_colour(STDERR_FILENO) ? spdlog::color_mode::always : spdlog::color_mode::never;
  spdlog::set_default_logger(spdlog::stderr_color_mt("tarnwick", mode));
  spdlog::set_pattern("%^%l%$: %v");
}

void MessageLogger::warning(std::string_view message, std::string_view argument,
                            const std::exception_ptr& error) {
  spdlog::warn("{}", warning_text(message, argument, error));
}

}  // namespace tarnwick::output
