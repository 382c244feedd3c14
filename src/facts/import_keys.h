// Ties imports to the files they may mean, by the last part of both.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::facts {

/// The parts of a module as facts::Import has it, outermost first, without what only says where to start
/// (`crate`, `self`, dots): `./lib/util` → lib, util; `a.b.C` → a, b, C.
std::vector<std::string_view> module_parts(std::string_view module);

/// The last of them: by which `imported` is asked. Empty when there is none.
std::string_view module_key(std::string_view module);

/// The parts of a path with `/`, outermost first.
std::vector<std::string_view> path_parts(std::string_view path);

/// How many parts two lists share at their ends.
std::size_t common_end(const std::vector<std::string_view>& a, const std::vector<std::string_view>& b);

}  // namespace tarnwick::facts
