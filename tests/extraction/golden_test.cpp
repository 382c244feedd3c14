// Each file in golden/ with what is found in it, in the .expected file beside it. To accept a change after
// reading it, run with TARNWICK_UPDATE_GOLDEN=1.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "extraction/dump.h"
#include "extraction/extraction.h"
#include "text/lines.h"

namespace tarnwick::extraction {
namespace {

namespace fs = std::filesystem;

std::string read(const fs::path& path) {
  const std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<std::string> sources() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(GOLDEN_DIRECTORY))
    if (entry.path().extension() != ".expected") names.push_back(entry.path().filename());
  std::ranges::sort(names);
  return names;
}

class Golden : public testing::TestWithParam<std::string> {};

TEST_P(Golden, SaysWhatIsExpected) {
  const auto path = fs::path(GOLDEN_DIRECTORY) / GetParam();
  const auto text = text::decode_file(read(path));
  const auto* language = languages::language_of(GetParam(), text);
  ASSERT_NE(language, nullptr);
  const auto facts = extract(*language, text, "pkg/src/" + GetParam());
  const auto expected = path.string() + ".expected";
  if (std::getenv("TARNWICK_UPDATE_GOLDEN") != nullptr)
    std::ofstream(expected, std::ios::binary) << dump(facts);
  EXPECT_EQ(dump(facts), read(expected));
  for (const auto& each : facts.definitions) {
    EXPECT_TRUE(each.fqn.ends_with(each.name)) << each.fqn;
    EXPECT_LT(each.start_byte, each.end_byte) << each.fqn;
    EXPECT_LE(each.end_byte, text.size()) << each.fqn;
    EXPECT_LE(each.start_line, each.end_line) << each.fqn;
    EXPECT_LT(each.parent.value_or(0), 1 + static_cast<std::size_t>(&each - facts.definitions.data()))
        << each.fqn;
  }
}

INSTANTIATE_TEST_SUITE_P(Sources, Golden, testing::ValuesIn(sources()), [](const auto& tested) {
  std::string name = tested.param;
  std::ranges::replace_if(
      name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
});

TEST(Languages, EachHasAGoldenFile) {
  std::set<const languages::Language*> seen;
  for (const auto& name : sources())
    seen.insert(languages::language_of(name, read(fs::path(GOLDEN_DIRECTORY) / name)));
  for (const auto& language : languages::languages()) EXPECT_TRUE(seen.contains(&language)) << language.name;
}

}  // namespace
}  // namespace tarnwick::extraction
