// Languages that a user adds: a grammar library and query files in a folder of the user's own configuration.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "languages/languages.h"
#include "languages/query.h"

namespace tarnwick::languages {

/// Where a user's languages are: `tarnwick/languages` in XDG_CONFIG_HOME, else in ~/.config; nothing when
/// neither that variable nor HOME says where. Never in a repository: a grammar is code that is run.
std::optional<std::filesystem::path> own_languages_folder();

/// A language of a user's own, with its query. Stays where it is.
struct OwnLanguage {
  Language row;
  std::optional<Query> query;
  std::string fingerprint;  ///< differs whenever the language may read a file differently
};

struct OwnLanguages {
  std::vector<std::unique_ptr<const OwnLanguage>> languages;  ///< by name
  std::vector<std::string> problems;                          ///< what is wrong with others, naming the file
};

/// Reads the languages in the folders inside `folder` (docs/index.md says what they hold) and loads their
/// grammars for good. One with a fault becomes a problem; that there is no folder is none.
OwnLanguages read_own_languages(const std::filesystem::path& folder);

}  // namespace tarnwick::languages
