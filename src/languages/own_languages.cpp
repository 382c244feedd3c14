#include "languages/own_languages.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <tree_sitter/api.h>
#include <xxhash.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "languages/language_row.h"
#include "util/directory_entries.h"

namespace tarnwick::languages {

namespace fs = std::filesystem;

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

/// The query files of a language: those that its row names, else all that the folder holds.
std::vector<fs::path> query_files(const fs::path& folder, const Language& language) {
  std::vector<fs::path> files;
  for (const std::string& name : language.queries) files.push_back(folder / (name + ".scm"));
  if (!files.empty()) return files;
  std::error_code unread;
  for (const fs::directory_entry& entry : util::entries_of(folder, unread)) {
    if (entry.path().extension() == ".scm") files.push_back(entry.path());
  }
  if (unread) refuse(folder, "cannot be read: " + unread.message());
  if (files.empty()) refuse(folder, "holds no query file (*.scm)");
  std::ranges::sort(files);
  return files;
}

/// Their texts; each is checked alone so that a message names it.
std::string read_queries(const fs::path& folder, const Language& language) {
  std::string texts;
  for (const fs::path& file : query_files(folder, language)) {
    const std::string text = read(file) + '\n';
    try {
      read_patterns(language.grammar(), text, file.string());
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

LanguageRow read_settings(const fs::path& file, const std::string& name, const std::string& text) {
  try {
    return read_row(name, text);
  } catch (const std::invalid_argument& error) {
    refuse(file, error.what());
  }
}

std::unique_ptr<const OwnLanguage> read_language(const fs::path& folder) {
  const std::string name = folder.filename().string();
  if (language_named(name) != nullptr) refuse(folder, "a language of that name is built in");
  const std::string settings = read(folder / SETTINGS);
  auto [language, grammar, function] = read_settings(folder / SETTINGS, name, settings);
  const fs::path library = folder / (grammar.empty() ? name + ".so" : grammar);
  language.grammar = load_grammar(library, function);
  const std::string queries = read_queries(folder, language);
  auto own = std::make_unique<OwnLanguage>();
  own->query.emplace(language.grammar(), queries, name);
  own->row = std::move(language);
  const std::string state = name + '\n' + settings + '\n' + queries + '\n' + state_of(library);
  own->fingerprint = std::to_string(XXH3_64bits(state.data(), state.size()));
  return own;
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
