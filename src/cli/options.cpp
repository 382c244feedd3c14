#include "cli/options.h"

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

#include "output/formats.h"
#include "text/surrogates.h"

namespace tarnwick::cli {
namespace {

using service::Field;
using Strings = std::vector<std::string>;

/// Puts a number in its plain form. The parser's own conversion takes 010 for 8, nothing for 0, and what
/// passes 64 bits for the greatest number.
std::string to_decimal(std::string& digits) {
  std::int64_t number = 0;
  const char* const end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, number);
  if (result.ec == std::errc::result_out_of_range) return "Out of range: " + digits;
  if (result.ec != std::errc() || result.ptr != end) return "Not a whole number: " + digits;
  digits = std::to_string(number);
  return "";
}

CLI::Option* add(CLI::App& command, const Field& field, const std::string& sentence, std::string* words) {
  const auto join = [words](const Strings& given) {
    *words = text::from_os(fmt::format("{}", fmt::join(given, " ")));
  };
  return command.add_option_function<Strings>(std::string(field.placeholder), join, sentence)->required();
}

CLI::Option* add(CLI::App& command, const Field& field, const std::string& sentence,
                 std::optional<std::string>* text) {
  const auto set = [text](const std::string& given) { *text = text::from_os(given); };
  return command.add_option_function<std::string>(option_name(field.name), set, sentence);
}

template <class Number>
CLI::Option* add_number(CLI::App& command, const Field& field, const std::string& sentence, Number* number) {
  return command.add_option(option_name(field.name), *number, sentence)
      ->transform(CLI::Validator(to_decimal, ""));
}
CLI::Option* add(CLI::App& command, const Field& field, const std::string& sentence, std::int64_t* number) {
  return add_number(command, field, sentence, number)->capture_default_str();
}
CLI::Option* add(CLI::App& command, const Field& field, const std::string& sentence,
                 std::optional<std::int64_t>* number) {
  return add_number(command, field, sentence, number);
}

CLI::Option* add(CLI::App& command, const Field& field, const std::string& sentence, bool* flag) {
  return command.add_flag(option_name(field.name), *flag, sentence);
}

/// `List` is a list, or an optional one.
template <class List>
CLI::Option* add_list(CLI::App& command, const Field& field, const std::string& sentence, List* names) {
  const auto set = [names](Strings given) {
    std::transform(given.begin(), given.end(), given.begin(), text::from_os);
    *names = std::move(given);
  };
  return command.add_option_function<Strings>(option_name(field.name), set, sentence + "; repeatable")
      ->allow_extra_args(false);
}
CLI::Option* add(CLI::App& command, const Field& field, const std::string& sentence, Strings* names) {
  return add_list(command, field, sentence, names);
}
CLI::Option* add(CLI::App& command, const Field& field, const std::string& sentence,
                 std::optional<Strings>* names) {
  return add_list(command, field, sentence, names);
}

}  // namespace

std::string option_name(std::string_view field) {
  std::string name = "--" + std::string(field);
  std::replace(name.begin() + 2, name.end(), '_', '-');
  return name;
}

void add_options(CLI::App& command, const std::vector<Field>& fields) {
  for (const Field& field : fields) {
    CLI::Option* const option = std::visit(
        [&](auto* value) { return add(command, field, std::string(field.sentence), value); }, field.value);
    if (!field.placeholder.empty()) option->type_name(std::string(field.placeholder));
    if (field.choices.empty()) continue;
    option->check(CLI::IsMember(Strings(field.choices.begin(), field.choices.end())))
        ->option_text(std::string(field.placeholder) + " ...");
  }
}

void add_format_option(CLI::App& command, std::string& format) {
  Strings names;
  for (const output::Format& known : output::formats()) names.emplace_back(known.name);
  command
      .add_option("--format", format,
                  fmt::format("{}; default: text on a terminal, else json", fmt::join(names, ", ")))
      ->type_name("FORMAT")
      ->check(CLI::IsMember(names));
}

}  // namespace tarnwick::cli
