// A report as a person reads it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "output/formats.h"

namespace tarnwick::output {

/// The parts that a report is shown as; a format for people writes each in its own way. Texts are valid UTF-8
/// without control characters but line feed and tab.
class Page {
 public:
  Page() = default;
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;
  virtual ~Page() = default;

  virtual void entry(std::size_t number, std::string_view kind, std::string_view fqn,
                     std::string_view place) = 0;
  /// Lines of a file, or a declaration; `language` is a file extension without the dot, or empty.
  virtual void code(std::string_view lines, std::string_view language) = 0;
  virtual void prose(std::string_view text) = 0;
  /// What belongs to the entry: parameters, related symbols, usage.
  virtual void detail(std::string_view label, const std::vector<std::string>& items) = 0;
  /// What belongs to the whole report: files, tests, recommendations, notes.
  virtual void section(std::string_view title, const std::vector<std::string>& items) = 0;
  virtual void closing(std::string_view line) = 0;
};

/// Shows `report` on `page`: everything that the serialised report holds, in the same order.
void show(const Report& report, Page& page);

}  // namespace tarnwick::output
