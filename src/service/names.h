// Symbols by the names that requests give them.
#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "service/view.h"

namespace tarnwick::service {

/// A request names what the repository lacks.
class UnknownName : public std::exception {
 public:
  enum class What { symbol, component, place };

  /// `near`: names that may have been meant, best first; of a place, those where the symbol is.
  UnknownName(What what, std::string_view name, std::vector<std::string> near);

  What what_kind() const noexcept { return what_; }
  const std::vector<std::string>& near() const noexcept { return near_; }
  const char* what() const noexcept override { return message_.c_str(); }
  /// The text of what(), whole even where the name holds a NUL.
  const std::string& message() const noexcept { return message_; }

 private:
  What what_;
  std::vector<std::string> near_;
  std::string message_;
};

/// "a, b, c".
std::string listed(const std::vector<std::string>& names);

/// All symbols that packs show under this name, never none: a file name that is no UTF-8 shows with U+FFFD in
/// it. Throws UnknownName.
std::vector<SymbolPtr> symbols_named(const View& view, const std::string& fqn);

}  // namespace tarnwick::service
