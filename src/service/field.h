// One value of a request, described once for every face of the program.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarnwick::service {

/// Where the value of a field goes. The type tells what it is: a std::string is required, a bool is a flag,
/// and what is not optional holds its default until a value is read.
using FieldValue =
    std::variant<std::string*, std::optional<std::string>*, std::int64_t*, std::optional<std::int64_t>*,
                 bool*, std::vector<std::string>*, std::optional<std::vector<std::string>>*>;

/// The name that a field had; requests with it are still read, but nothing lists it.
struct FormerName {
  std::string_view name = {};
  bool negated = false;  ///< of a flag that told the opposite
};

inline constexpr std::int64_t MAX_NAME_CHARACTERS = 1000;
inline constexpr std::int64_t MAX_NAMES = 50;

/// A field of a request; valid as long as the request stays where it is.
struct Field {
  std::string_view name;              ///< in lower case, words separated by "_"
  std::string_view placeholder = {};  ///< what help shows for a value: "FQN"; empty for flags
  FieldValue value;
  std::string_view sentence;  ///< what it does, without a final period
  FormerName former = {};
  /// Of the number; of the characters of a text; of the items of a list, whose items are names. They bind
  /// requests that come from elsewhere: who owns the machine may ask for more on its command line.
  std::int64_t min = 0;
  std::int64_t max = MAX_NAME_CHARACTERS;
  std::vector<std::string_view> choices = {};  ///< all that a text or an item may be; empty: anything
};

}  // namespace tarnwick::service
