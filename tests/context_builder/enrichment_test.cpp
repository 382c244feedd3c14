#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/fakes.h"

namespace tarnwick::testing {
namespace {

using ::testing::IsEmpty;

TEST(RelatedSymbols, AreTheFirstOthersOfTheFile) {
  FakeRepository index;
  const FakeTokenizer tokenizer;
  const ContextBuilder builder(index, tokenizer);
  const SymbolPtr self = index.add(fields(1, "self"), "a.py");
  index.add(fields(2, "self", "class"), "a.py");  // the same qualified name
  index.add(fields(3, "v", "variable"), "a.py");
  EXPECT_THAT(builder._get_related_symbols(*self, Text("a.py")), IsEmpty());
  for (const char* name : {"f", "g", "h", "i"})
    index.add(fields(4, name, *name == 'g' ? "method" : "class"), "a.py");
  const auto related = builder._get_related_symbols(*self, Text("a.py"));
  ASSERT_EQ(related.size(), 3U);
  EXPECT_EQ(related[1].fqn, "pkg.g");
  EXPECT_EQ(related[1].kind, "method");

  SymbolFields homeless = fields(1, "self");
  homeless.file_id = 0;
  EXPECT_THAT(builder._get_related_symbols(*self, std::nullopt), IsEmpty());
  EXPECT_THAT(builder._get_related_symbols(*make_symbol(homeless), Text("a.py")), IsEmpty());
}

struct UsageCase {
  std::string what;
  std::vector<ReferencePtr> references;
  OptionalText example;
};

ReferencePtr reference(std::string type, std::optional<CallerSymbol> caller, OptionalText context) {
  return make_reference(
      {.usage_type = std::move(type), .caller_symbol = std::move(caller), .context = std::move(context)});
}

TEST(UsageExample, IsTheMostTellingLine) {
  FakeRepository index;
  const FakeTokenizer tokenizer;
  const ContextBuilder builder(index, tokenizer);
  SymbolFields known = fields(5, "main");
  known.signature = "def main()";
  index.add(known, "m.py");
  index.add(fields(6, "bare"), "m.py");
  const CallerSymbol main{"pkg.main", "function", "main"};
  const CallerSymbol bare{"pkg.bare", "function", "bare"};
  const std::vector<UsageCase> cases = {
      {"no references", {}, std::nullopt},
      {"a call before others",
       {reference("import", std::nullopt, "import x"), reference("call", main, "x()")},
       "Used in: def main()"},
      {"no caller", {reference("import", std::nullopt, "\t   x = compute(1) \n")}, "x = compute(1)"},
      {"blank line", {reference("call", std::nullopt, "  ")}, ""},
      {"no caller, no line", {reference("call", std::nullopt, std::nullopt)}, std::nullopt},
      {"a caller without a signature", {reference("call", bare, "x()")}, "Called by function `bare`"},
      {"an unknown caller",
       {reference("call", CallerSymbol{"pkg.gone", "method", {}}, " x()")},
       "Called by method ` x()`"},
      {"nothing to name", {reference("call", CallerSymbol{{}, "method", {}}, {})}, "Called by method ``"},
      {"an empty name stays empty",
       {reference("call", CallerSymbol{{}, "method", ""}, "x")},
       "Called by method ``"},
      {"a name alone", {reference("call", CallerSymbol{{}, {}, "main"}, "x")}, "main"},
      {"a line alone", {reference("call", CallerSymbol{{}, "", {}}, " x() ")}, " x() "},
      {"nothing", {reference("call", CallerSymbol{"", {}, {}}, "")}, std::nullopt},
  };
  for (const UsageCase& c : cases) {
    index.references["pkg.x"] = c.references;
    EXPECT_EQ(builder._get_usage_example(*symbol(1, "x")), c.example) << c.what;
  }
  EXPECT_EQ(builder._get_usage_example(*symbol(0, "x")), std::nullopt);
}

}  // namespace
}  // namespace tarnwick::testing
