// The repositories that hosts derive from.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/fakes.h"
#include "tarnwick/storage/empty_repository.h"
#include "tarnwick/storage/forwarding_repository.h"

namespace tarnwick::testing {
namespace {

using ::testing::IsEmpty;

/// Knows its symbols by name and nothing else.
struct NamesAlone final : EmptyRepository {
  SymbolMatches search_symbols(const Text& pattern, std::int64_t /*limit*/,
                               bool /*source_only*/) const override {
    return {{symbol(1, std::string(pattern.view()))}, 1, false};
  }
  void fetch_scored_fields(const std::vector<SymbolPtr>& symbols) const override {
    fetched += symbols.size();
  }
  mutable std::size_t fetched = 0;
};

TEST(EmptyRepository, NeedsNoMoreThanNamesForAPack) {
  const FakeTokenizer tokenizer;
  FakeRetriever retriever;
  retriever.ranked = {{1, "function", 1.0}};
  FakeLogger logger;
  const EmptyRepository nothing;
  const ContextBuilder over_nothing(nothing, tokenizer, &retriever, true, {.logger = &logger});
  const ContextPack empty = over_nothing.build_context_pack("parse");
  EXPECT_THAT(empty.symbols, IsEmpty());
  EXPECT_THAT(empty.notes, IsEmpty());
  EXPECT_THROW(over_nothing.build_context_pack("parse", {.component_filter = "core"}), UnknownComponent);

  const NamesAlone names;
  const ContextPack pack = ContextBuilder(names, tokenizer, nullptr, true).build_context_pack("parse");
  ASSERT_EQ(pack.symbols.size(), 1U);
  EXPECT_EQ(pack.symbols[0].symbol->name(), "parse");
  EXPECT_TRUE(pack.symbols[0].file.empty());
}

TEST(ForwardingRepository, PassesTheHooksOn) {
  const NamesAlone names;
  const ForwardingRepository forwarding(names);
  const FakeTokenizer tokenizer;
  ContextBuilder(forwarding, tokenizer).build_context_pack("parse");
  EXPECT_EQ(names.fetched, 1U);
}

}  // namespace
}  // namespace tarnwick::testing
