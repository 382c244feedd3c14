#include "extraction/scoped_names.h"

#include <algorithm>
#include <cctype>

namespace tarnwick::extraction {

namespace {

constexpr std::size_t MAX_QUALIFIER_BYTES = 64;

/// Where the last part of a name written with its scopes begins: behind the last separator outside brackets.
std::size_t last_part_of_scoped(std::string_view name, std::string_view separator) {
  std::size_t result = 0;
  int depth = 0;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name.substr(result).starts_with("operator")) break;
    if (name[i] == '<' || name[i] == '(') ++depth;
    if (name[i] == '>' || name[i] == ')') --depth;
    if (depth == 0 && name.substr(i).starts_with(separator)) result = i + separator.size();
  }
  return result;
}

}  // namespace

std::string plain_scope(std::string_view written, std::string_view separator) {
  std::string result;
  int depth = 0;
  for (std::size_t i = 0; i < written.size() && result.size() < MAX_PREFIX_BYTES; ++i) {
    const char c = written[i];
    if (c == '<' || c == '[' || c == '(') ++depth;
    if (depth == 0 && (c == '.' || c == ':' || c == '\\')) {
      if (!result.empty() && !result.ends_with(separator)) result += separator;
    } else if (depth == 0 && !std::isspace(static_cast<unsigned char>(c)) && c != '*' && c != '&') {
      result += c;
    }
    if (c == '>' || c == ']' || c == ')') depth = std::max(0, depth - 1);
  }
  if (result.ends_with(separator)) result.resize(result.size() - separator.size());
  return result;
}

std::string joined(std::initializer_list<std::string_view> parts, std::string_view separator) {
  std::string result;
  for (const auto part : parts) {
    if (part.empty()) continue;
    if (!result.empty()) result += separator;
    result += part;
  }
  return result;
}

std::string_view plain_qualifier(std::string_view written) {
  const bool fits = written.size() <= MAX_QUALIFIER_BYTES && written.find('\n') == std::string_view::npos;
  return fits ? written : std::string_view();
}

std::string_view last_part(std::string_view name) {
  const auto end = name.find_last_of("./:\\");
  return end == std::string_view::npos || end + 1 == name.size() ? name : name.substr(end + 1);
}

bool is_upper_case(std::string_view name) {
  return std::ranges::any_of(name, [](unsigned char c) { return std::isupper(c); }) &&
         std::ranges::none_of(name, [](unsigned char c) { return std::islower(c); });
}

void split_name(RawDefinition& definition, const languages::Language& language, std::string_view text) {
  if (language.is_document) return;
  const auto written = [&] { return view(text, definition.name); };
  if (written().starts_with(':') && written().size() > 1)
    ++definition.name.start;  // Ruby names an attribute by a symbol
  const auto name = written();
  const auto last = last_part_of_scoped(name, language.separator);
  const auto parameters = name.substr(last).find('(');
  if (name.substr(last).starts_with("operator ") && parameters != std::string_view::npos)
    definition.name.end = definition.name.start + last + parameters;  // a conversion is named by its type
  if (last == 0 || last >= name.size() || name.starts_with('"') || name.starts_with('\'')) return;
  definition.qualifier = name.substr(0, last);
  definition.name.start += last;
}

}  // namespace tarnwick::extraction
