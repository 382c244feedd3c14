#include "service/names.h"

#include <utility>

#include "text/surrogates.h"

namespace tarnwick::service {
namespace {

constexpr std::int64_t NEAR_NAMES = 5;
constexpr std::int64_t MAX_LIKE_NAMED = 50;

std::string message_of(UnknownName::What what, std::string_view name, const std::vector<std::string>& near) {
  switch (what) {
    case UnknownName::What::symbol:
      return "Unknown symbol: " + std::string(name);
    case UnknownName::What::component:
      return "Unknown component: " + std::string(name);
    case UnknownName::What::place:
      break;
  }
  return std::string(name) + " is not there, but at: " + listed(near);
}

std::string last_name(std::string_view fqn) {
  const std::size_t last = fqn.find_last_of(".:/#");
  return std::string(last == std::string_view::npos ? fqn : fqn.substr(last + 1));
}

/// Symbols whose names hold the last part of `fqn`.
std::vector<SymbolPtr> symbols_like(const View& view, std::string_view fqn, std::int64_t limit) {
  const std::string name = last_name(fqn);
  if (name.empty()) return {};
  return view.repository().search_symbols("%" + name + "%", limit, false).symbols;
}

}  // namespace

UnknownName::UnknownName(What what, std::string_view name, std::vector<std::string> near)
    : what_(what), near_(std::move(near)), message_(message_of(what, name, near_)) {}

std::string listed(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list;
}

std::vector<SymbolPtr> symbols_named(const View& view, const std::string& fqn) {
  std::vector<SymbolPtr> found = view.symbols_by_fqn(fqn);
  if (!found.empty()) return found;
  if (fqn.find("\uFFFD") != std::string::npos) {
    for (const SymbolPtr& symbol : symbols_like(view, fqn, MAX_LIKE_NAMED)) {
      if (text::replace_surrogates(symbol->fqn()) == fqn) return view.symbols_by_fqn(symbol->fqn());
    }
  }
  std::vector<std::string> near;
  for (const SymbolPtr& symbol : symbols_like(view, fqn, NEAR_NAMES))
    near.push_back(text::replace_surrogates(symbol->fqn()));
  throw UnknownName(UnknownName::What::symbol, fqn, std::move(near));
}

}  // namespace tarnwick::service
