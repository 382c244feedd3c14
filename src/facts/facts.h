// What the extraction of one source file gives to the store.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick::facts {

/// A symbol that a file defines. Lines count from 1, both ends inclusive, in the file's folded text
/// (text/lines.h); byte offsets are into the same text, half open.
struct Definition {
  std::string name = {};
  /// Ends with the name; before it the enclosing scopes and, where the language has one, the module or
  /// package.
  std::string fqn = {};
  std::string kind = {};  ///< one of the fourteen kinds that scoring knows, where it fits
  bool is_export = false;
  std::int64_t start_line = 1;
  std::int64_t end_line = 1;
  std::size_t start_byte = 0;
  std::size_t end_byte = 0;
  std::string signature = {};              ///< the declaration up to its body, white space folded
  std::string docstring = {};              ///< whole, markers stripped; empty when there is none
  std::optional<std::size_t> parent = {};  ///< position in FileFacts::definitions of the enclosing definition
};

/// A place that uses a name.
struct Use {
  std::string name;  ///< the simple name used
  std::string
      qualifier;  ///< what stands before it (`obj` in `obj.name()`, `a::b` in `a::b::name`); may be empty
  std::string usage_type;  ///< "call", "import", "type" or "inherit"
  std::int64_t line = 1;
  std::optional<std::size_t> enclosing;  ///< position of the innermost definition that holds it
};

/// A name that a file brings in from elsewhere.
struct Import {
  std::string
      module;  ///< as written, without quotes and a file's extension: `./util`, `a.b`, `crate::x`, `foo/bar`
  std::string name;   ///< the imported name; empty for a whole module
  std::string alias;  ///< the local name; empty when it is the imported one
  std::int64_t line = 1;
};

/// Everything that one file says.
struct FileFacts {
  std::vector<Definition> definitions =
      {};                      ///< in order of start_byte; an enclosing one before what it encloses
  std::vector<Use> uses = {};  ///< in order of line
  std::vector<Import> imports = {};
  bool has_error = false;    ///< the parser met a syntax error; everything else is still there
  bool is_fallback = false;  ///< parsing took too long: names and lines by plain patterns, no uses
};

}  // namespace tarnwick::facts
