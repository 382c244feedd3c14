#include "languages/language_row.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace tarnwick::languages {

using nlohmann::json;

namespace {

constexpr const char* TEXT = "a text";
constexpr const char* FLAG = "true or false";
constexpr const char* TEXTS = "a list of texts";

constexpr auto EXPORT_RULES = std::to_array<std::pair<std::string_view, ExportRule>>({
    {"unmarked", ExportRule::unmarked},
    {"marked", ExportRule::marked},
    {"underscore", ExportRule::underscore},
    {"uppercase", ExportRule::uppercase},
});

constexpr auto MODULE_PATHS = std::to_array<std::pair<std::string_view, ModulePath>>({
    {"none", ModulePath::none},
    {"dotted", ModulePath::dotted},
    {"crate", ModulePath::crate},
    {"file", ModulePath::file},
});

[[noreturn]] void must_be(std::string_view key, std::string_view wanted) {
  throw std::invalid_argument("\"" + std::string(key) + "\" must be " + std::string(wanted));
}

/// The settings of a row, each taken once; what is left at the end is a mistake.
class Settings {
 public:
  explicit Settings(std::string_view text) {
    try {
      values_ = json::parse(text);
    } catch (const json::parse_error& error) {
      throw std::invalid_argument(error.what());
    }
    if (!values_.is_object()) throw std::invalid_argument("not a JSON object");
  }

  /// Leaves `value`, the default, where the row does not set it.
  template <class Value>
  void take(const char* key, Value& value, std::string_view wanted) {
    const auto found = values_.find(key);
    if (found == values_.end()) return;
    try {
      value = found->template get<Value>();
    } catch (const json::exception&) {
      must_be(key, wanted);
    }
    values_.erase(found);
  }

  template <class Value, std::size_t N>
  void take(const char* key, Value& value, const std::array<std::pair<std::string_view, Value>, N>& choices) {
    std::string name;
    std::string wanted = "one of";
    for (const auto& [known, meaning] : choices) {
      if (meaning == value) name = known;
      wanted.append(" \"").append(known).append("\"");
    }
    take(key, name, wanted);
    const auto* chosen = std::ranges::find(choices, name, [](const auto& each) { return each.first; });
    if (chosen == choices.end()) must_be(key, wanted);
    value = chosen->second;
  }

  /// Parts of paths, which hold no slash.
  void take_names(const char* key, Words& names) {
    take(key, names, TEXTS);
    if (std::ranges::any_of(names,
                            [](const auto& each) { return each.empty() || each.find('/') != each.npos; }))
      must_be(key, "a list of texts that are not empty, without slashes");
  }

  void take_extensions(const char* key, Words& extensions) {
    take_names(key, extensions);
    if (!std::ranges::all_of(extensions, [](const auto& each) { return each.starts_with('.'); }))
      must_be(key, "a list of texts that begin with a dot");
  }

  void take_patterns(const char* key, Words& patterns) {
    take_names(key, patterns);
    if (std::ranges::any_of(patterns, [](const auto& each) { return std::ranges::count(each, '*') > 1; }))
      must_be(key, "a list of texts with one \"*\" at most");
  }

  void end() const {
    if (!values_.empty()) throw std::invalid_argument("no such setting: \"" + values_.begin().key() + "\"");
  }

 private:
  json values_;
};

void read_files(Settings& settings, Language& row) {
  settings.take_extensions("extensions", row.extensions);
  settings.take_names("file_names", row.file_names);
  settings.take_names("interpreters", row.interpreters);
  settings.take_names("directory_files", row.directory_files);
  settings.take_extensions("import_extensions", row.import_extensions);
  settings.take_patterns("test_files", row.test_files);
  settings.take_names("test_directories", row.test_directories);
  settings.take_patterns("generated_files", row.generated_files);
}

void read_syntax(Settings& settings, Language& row) {
  settings.take("separator", row.separator, TEXT);
  settings.take("exports", row.exports, EXPORT_RULES);
  settings.take("module_path", row.module_path, MODULE_PATHS);
  settings.take("line_comments", row.line_comments, TEXTS);
  settings.take("block_comments", row.block_comments, "a list of lists of two texts");
  settings.take("directives", row.directives, TEXTS);
  settings.take("declarations", row.declarations, "an object of texts");
  settings.take("upper_case_constants", row.upper_case_constants, FLAG);
  settings.take("attribute_macros", row.attribute_macros, FLAG);
  settings.take("lines_end_members", row.lines_end_members, FLAG);
  settings.take("max_unclosed_angles", row.max_unclosed_angles, "a number");
  settings.take("document", row.is_document, FLAG);
}

}  // namespace

LanguageRow read_row(std::string_view name, std::string_view text) {
  LanguageRow result{.language = {.name = std::string(name), .family = std::string(name)},
                     .grammar = {},
                     .function = "tree_sitter_" + std::string(name)};
  std::ranges::replace(result.function, '-', '_');
  Language& row = result.language;
  Settings settings(text);
  settings.take("grammar", result.grammar, TEXT);
  settings.take("function", result.function, TEXT);
  settings.take_names("queries", row.queries);
  settings.take("family", row.family, TEXT);
  read_files(settings, row);
  read_syntax(settings, row);
  settings.end();
  if (row.extensions.empty() && row.file_names.empty() && row.interpreters.empty())
    throw std::invalid_argument(R"(says neither "extensions" nor "file_names" nor "interpreters")");
  return result;
}

}  // namespace tarnwick::languages
