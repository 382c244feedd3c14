// What resolvers of one state of an index share.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "index/reader.h"
#include "resolution/definitions.h"
#include "resolution/import_links.h"
#include "resolution/memo.h"
#include "resolution/resolver.h"

namespace tarnwick::resolution {

/// Worked out when asked for, over the reader of whoever asks, and kept. Safe to share between threads.
class Resolved {
 public:
  /// The resolved uses of one name, by target, then by position.
  using Uses = std::vector<ResolvedUse>;
  /// The uses in one file, by name, then by id.
  using FileUses = std::vector<FileUse>;

  const ImportLinks& links(const index::Reader& reader) const;
  std::shared_ptr<const Definitions> definitions(const index::Reader& reader, std::int64_t name_id) const;
  std::shared_ptr<const Uses> uses(const index::Reader& reader, std::int64_t name_id) const;
  std::shared_ptr<const FileUses> uses_in(const index::Reader& reader, std::int64_t file) const;

 private:
  static constexpr std::size_t MAX_KEPT = std::size_t{1} << 19U;

  mutable std::once_flag linked_;
  mutable std::optional<ImportLinks> links_;
  mutable Memo<Definitions> definitions_{MAX_KEPT};
  mutable Memo<Uses> uses_{MAX_KEPT};
  mutable Memo<FileUses> file_uses_{MAX_KEPT};
};

}  // namespace tarnwick::resolution
