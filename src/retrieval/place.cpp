#include "retrieval/place.h"

#include <algorithm>
#include <array>

namespace tarnwick::retrieval {
namespace {

using std::string_view_literals::operator""sv;

constexpr double PERIPHERY_PLACE = 0.5;

constexpr auto PERIPHERY = std::to_array(
    {"bench"sv,       "benches"sv,     "benchmark"sv, "benchmarks"sv, "contrib"sv, "demo"sv,
     "demos"sv,       "deps"sv,        "dist"sv,      "doc"sv,        "docs"sv,    "e2e"sv,
     "example"sv,     "examples"sv,    "fixtures"sv,  "fuzz"sv,       "fuzzing"sv, "node_modules"sv,
     "playground"sv,  "playgrounds"sv, "sample"sv,    "samples"sv,    "scripts"sv, "third-party"sv,
     "third_party"sv, "thirdparty"sv,  "tools"sv,     "vendor"sv});

}  // namespace

double place_of(const index::IndexedFile& file) {
  return (file.is_test ? TEST_PLACE : 1) * (is_periphery(file.path) ? PERIPHERY_PLACE : 1);
}

bool is_periphery(std::string_view path) {
  for (std::size_t at = 0, end = path.find('/'); end != std::string_view::npos;
       at = end + 1, end = path.find('/', at))
    if (std::ranges::find(PERIPHERY, path.substr(at, end - at)) != PERIPHERY.end()) return true;
  return false;
}

}  // namespace tarnwick::retrieval
