#include "languages/own_languages.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <tree_sitter/api.h>
#include <xxhash.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "languages/word_list.h"
#include "util/directory_entries.h"

namespace tarnwick::languages {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr std::string_view SETTINGS = "language.json";

[[noreturn]] void refuse(const fs::path& file, const std::string& reason) {
  throw std::runtime_error(file.string() + ": " + reason);
}

std::string read(const fs::path& file) {
  const std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  std::error_code error;
  if (!stream.is_open() || !fs::is_regular_file(file, error)) refuse(file, "cannot be read");
  return text.str();
}

/// The settings of a language, each taken once; what is left at the end is a mistake.
class Settings {
 public:
  explicit Settings(fs::path file) : file_(std::move(file)), text_(read(file_)) {
    try {
      values_ = json::parse(text_);
    } catch (const json::parse_error& error) {
      refuse(file_, error.what());
    }
    if (!values_.is_object()) refuse(file_, "not a JSON object");
  }

  std::string text(const char* key, std::string otherwise) {
    const json value = take(key);
    if (value.is_null()) return otherwise;
    if (!value.is_string()) must_be(key, "a text");
    return value.get<std::string>();
  }

  bool flag(const char* key) {
    const json value = take(key);
    if (!value.is_null() && !value.is_boolean()) must_be(key, "true or false");
    return value.is_boolean() && value.get<bool>();
  }

  /// A list of words, parted by blanks as the rows of languages have them.
  std::string words(const char* key) {
    const json value = take(key);
    std::string result;
    if (!value.is_null() && !value.is_array()) must_be(key, "a list of texts");
    for (const json& word : value) {
      if (!word.is_string() || word.get<std::string>().find_first_of(" /") != std::string::npos)
        must_be(key, "a list of texts without blanks or slashes");
      result += word.get<std::string>() + ' ';
    }
    return result;
  }

  [[noreturn]] void must_be(const std::string& key, const std::string& wanted) const {
    refuse(file_, "\"" + key + "\" must be " + wanted);
  }

  void end() const {
    if (!values_.empty()) refuse(file_, "no such setting: \"" + values_.begin().key() + "\"");
  }

  const std::string& source() const { return text_; }

 private:
  json take(const char* key) {
    json value = values_.contains(key) ? values_[key] : json();
    values_.erase(key);
    return value;
  }

  fs::path file_;
  std::string text_;
  json values_;
};

ExportRule export_rule(const Settings& settings, std::string_view name) {
  for (const auto& [known, rule] : {std::pair("unmarked", ExportRule::UNMARKED),
                                    {"marked", ExportRule::MARKED},
                                    {"underscore", ExportRule::UNDERSCORE},
                                    {"uppercase", ExportRule::UPPERCASE}})
    if (name == known) return rule;
  settings.must_be("exports", R"("unmarked", "marked", "underscore" or "uppercase")");
}

using GrammarFunction = const TSLanguage* (*)();

GrammarFunction load_grammar(const fs::path& library, const std::string& symbol) {
  std::error_code error;
  if (!fs::is_regular_file(library, error)) refuse(library, "there is no such grammar library");
  void* handle = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) refuse(library, std::string("cannot be loaded: ") + ::dlerror());
  // The standard leaves the conversion of such pointers to the platform, which defines it.
  const auto grammar = reinterpret_cast<GrammarFunction>(::dlsym(handle, symbol.c_str()));
  if (grammar == nullptr) refuse(library, "has no function " + symbol);
  const std::uint32_t abi = ts_language_version(grammar());
  if (abi < TREE_SITTER_MIN_COMPATIBLE_LANGUAGE_VERSION || abi > TREE_SITTER_LANGUAGE_VERSION) {
    refuse(library, "has language ABI " + std::to_string(abi) + ", this program takes " +
                        std::to_string(TREE_SITTER_MIN_COMPATIBLE_LANGUAGE_VERSION) + " to " +
                        std::to_string(TREE_SITTER_LANGUAGE_VERSION));
  }
  return grammar;
}

/// The texts of a folder's query files, by name; each is checked alone so that a message names it.
std::string read_queries(const fs::path& folder, const TSLanguage* grammar) {
  std::vector<fs::path> files;
  std::error_code unread;
  for (const fs::directory_entry& entry : util::entries_of(folder, unread)) {
    if (entry.path().extension() == ".scm") files.push_back(entry.path());
  }
  if (unread) refuse(folder, "cannot be read: " + unread.message());
  if (files.empty()) refuse(folder, "holds no query file (*.scm)");
  std::ranges::sort(files);
  std::string texts;
  for (const fs::path& file : files) {
    const std::string text = read(file) + '\n';
    try {
      read_patterns(grammar, text, file.string());
    } catch (const std::invalid_argument& error) {
      throw std::runtime_error(error.what());
    }
    texts += text;
  }
  return texts;
}

/// When a library was last written, and how long it is: reading it whole would cost each start of the
/// program.
std::string state_of(const fs::path& library) {
  struct ::stat status = {};
  ::stat(library.c_str(), &status);
  return std::to_string(status.st_size) + '.' + std::to_string(status.st_mtim.tv_sec) + '.' +
         std::to_string(status.st_mtim.tv_nsec);
}

std::unique_ptr<const OwnLanguage> read_language(const fs::path& folder) {
  auto language = std::make_unique<OwnLanguage>();
  OwnLanguage& own = *language;
  own.name = folder.filename().string();
  if (language_named(own.name) != nullptr) refuse(folder, "a language of that name is built in");
  Settings settings(folder / SETTINGS);
  std::string function = "tree_sitter_" + own.name;
  std::ranges::replace(function, '-', '_');
  const fs::path library = folder / settings.text("grammar", own.name + ".so");
  own.extensions = settings.words("extensions");
  own.file_names = settings.words("file_names");
  own.interpreters = settings.words("interpreters");
  own.separator = settings.text("separator", ".");
  own.test_files = settings.words("test_files");
  const ExportRule exports = export_rule(settings, settings.text("exports", "unmarked"));
  const bool is_document = settings.flag("document");
  function = settings.text("function", function);
  settings.end();
  if (own.extensions.empty() && own.file_names.empty() && own.interpreters.empty())
    refuse(folder / SETTINGS, R"(says neither "extensions" nor "file_names" nor "interpreters")");
  if (any_word(own.extensions, [](auto word) { return !word.starts_with('.'); }))
    settings.must_be("extensions", "a list of texts that begin with a dot");
  const GrammarFunction grammar = load_grammar(library, function);
  const std::string queries = read_queries(folder, grammar());
  own.query.emplace(grammar(), queries, own.name);
  const std::string state = own.name + '\n' + settings.source() + '\n' + queries + '\n' + state_of(library);
  own.fingerprint = std::to_string(XXH3_64bits(state.data(), state.size()));
  own.row = {.name = own.name,
             .grammar = grammar,
             .queries = {},
             .extensions = own.extensions,
             .file_names = own.file_names,
             .interpreters = own.interpreters,
             .separator = own.separator,
             .exports = exports,
             .test_files = own.test_files,
             .is_document = is_document};
  return language;
}

}  // namespace

std::optional<fs::path> own_languages_folder() {
  // A relative path in the variable is to be ignored, says the base directory specification.
  const char* configuration = std::getenv("XDG_CONFIG_HOME");
  if (configuration != nullptr && *configuration == '/')
    return fs::path(configuration) / "tarnwick" / "languages";
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home != '/') return std::nullopt;
  return fs::path(home) / ".config" / "tarnwick" / "languages";
}

OwnLanguages read_own_languages(const fs::path& folder) {
  OwnLanguages result;
  std::error_code error;
  std::vector<fs::path> folders;
  if (!fs::exists(folder, error)) return result;
  for (const fs::directory_entry& entry : util::entries_of(folder, error)) folders.push_back(entry.path());
  if (error) result.problems.push_back(folder.string() + ": " + error.message());
  std::ranges::sort(folders);
  for (const fs::path& each : folders) {
    if (!fs::is_directory(each, error)) continue;
    try {
      result.languages.push_back(read_language(each));
    } catch (const std::runtime_error& fault) {
      result.problems.emplace_back(fault.what());
    }
  }
  return result;
}

}  // namespace tarnwick::languages
