// Which files import which.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "storage/connection.h"

namespace tarnwick::storage {

/// One file, as far as imports go.
struct LinkedFile {
  std::int64_t id = 0;
  std::string path;
};

/// How surely an import means a file.
enum class Link { none, package, file };

struct ImportLink {
  std::int64_t importer = 0;
  std::int64_t imported = 0;
  Link link = Link::none;

  friend bool operator==(const ImportLink&, const ImportLink&) = default;
};

/// Which importers count; both conditions hold.
struct Importers {
  bool tests_only = false;
  const std::unordered_set<std::int64_t>* among = nullptr;  ///< file ids; null: any
};

/// The imports that may mean one of `files`: by the module's path for those that are relative, else by the
/// parts that both share at their ends, at least two of a module of several. Two queries. Ordered by
/// importer, then imported; each pair once, with its surest link.
std::vector<ImportLink> imports_of(Connection& connection, const std::vector<LinkedFile>& files,
                                   const Importers& importers);

}  // namespace tarnwick::storage
