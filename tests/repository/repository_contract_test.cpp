// What every Repository must answer, asked of the fake of the tests and of the index file.
#include <gmock/gmock.h>

#include <functional>
#include <memory>

#include "support/fakes.h"
#include "support/indexed_tree.h"

namespace tarnwick::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

struct Source {
  std::string path;
  std::string text;
};

const std::vector<Source> SOURCES = {
    {"core/lexer.toy", "use parser\npub fn lex\nparse()\nend\n"},
    {"core/package.json", R"({"name": "core-package"})"},
    {"core/parser.toy", "# Parses.\npub fn parse\nparse_line()\nend\nfn parse_line\nend\nfn parse100\nend\n"},
    {"tests/test_parser.toy", "use core/parser\nfn test_parse\nparse()\nend\n"},
};

/// A repository and whatever it answers from.
class Subject {
 public:
  virtual ~Subject() = default;
  virtual const Repository& repository() const = 0;
};

struct Opened {
  explicit Opened(const IndexedTree& tree) : stored(tree.open()) {}
  repository::StoredRepository stored;
};

class StoredSubject final : public Subject {
 public:
  StoredSubject() {
    for (const Source& source : SOURCES) tree_.write(source.path, source.text);
    tree_.update();
    repository_.emplace(tree_);
  }
  const Repository& repository() const override { return repository_->stored; }

 private:
  IndexedTree tree_;
  std::optional<Opened> repository_;
};

class FakeSubject final : public Subject {
 public:
  FakeSubject() {
    std::int64_t id = 0;
    for (const Source& source : SOURCES) {
      for (auto& definition : ToyExtractor().extract("toy", source.text, source.path).definitions) {
        SymbolFields symbol = fields(++id, definition.name);
        symbol.fqn = definition.fqn;
        symbol.signature = definition.signature;
        repository_.add(std::move(symbol), source.path);
      }
    }
    repository_.components = {{"core-package", {1, {1, 2}}}};
    repository_.test_files = {"tests/test_parser.toy"};
    repository_.covering = {{"tests/test_parser.toy", {{"core/parser.toy", 0}}}};
    const CallerSymbol lex = {.fqn = Text("lex"), .kind = Text("function"), .name = Text("lex")};
    const CallerSymbol test = {
        .fqn = Text("test_parse"), .kind = Text("function"), .name = Text("test_parse")};
    repository_.references["parse"] = {std::make_shared<FakeReference>("call", lex, Text("parse()")),
                                       std::make_shared<FakeReference>("call", test, Text("parse()"))};
    repository_.fan_in[2] = {.number = 1};
  }
  const Repository& repository() const override { return repository_; }

 private:
  FakeRepository repository_;
};

struct Implementation {
  const char* name;
  std::function<std::unique_ptr<Subject>()> make;
};

class RepositoryContract : public ::testing::TestWithParam<Implementation> {
 protected:
  std::vector<std::string> found(const Text& pattern, std::int64_t limit = 50) const {
    return fqns(repository_.search_symbols(pattern, limit, true).symbols);
  }
  static std::vector<std::string> fqns(const std::vector<SymbolPtr>& symbols) {
    std::vector<std::string> names;
    names.reserve(symbols.size());
    for (const SymbolPtr& symbol : symbols) names.emplace_back(symbol->fqn().view());
    return names;
  }

  std::unique_ptr<Subject> subject_ = GetParam().make();
  const Repository& repository_ = subject_->repository();
};

TEST_P(RepositoryContract, MatchesNamesByPattern) {
  EXPECT_THAT(found("parse"), ElementsAre("parse")) << "a bare word is a whole name";
  EXPECT_THAT(found("PARSE"), ElementsAre("parse")) << "letter case is ignored";
  EXPECT_THAT(found("%parse%"), UnorderedElementsAre("parse", "parse_line", "parse100", "test_parse"));
  EXPECT_THAT(found("parse%"), UnorderedElementsAre("parse", "parse_line", "parse100"));
  EXPECT_THAT(found("%_line"), ElementsAre("parse_line"));
  for (const char* none : {"", "pars", "parse?", "p*", "[p]arse", "missing"})
    EXPECT_THAT(found(none), IsEmpty()) << none;
  EXPECT_THAT(found(Text(std::string("parse\0", 6))), IsEmpty());
  EXPECT_THAT(found(Text(std::string(100'000, 'x') + "%")), IsEmpty());
  const SymbolMatches cut = repository_.search_symbols("%parse%", 2, true);
  EXPECT_EQ(cut.symbols.size(), 2U);
  EXPECT_EQ(cut.total, 4);
  EXPECT_TRUE(cut.truncated);
  EXPECT_FALSE(repository_.search_symbols("%parse%", 4, true).truncated);
}

TEST_P(RepositoryContract, AnswersBatches) {
  const std::vector<SymbolPtr> symbols = repository_.search_symbols("parse%", 50, true).symbols;
  ASSERT_EQ(symbols.size(), 3U);
  const std::int64_t id = *symbols[0]->id();
  const auto paths = repository_.get_file_paths_batch(symbols);
  EXPECT_EQ(paths->find(id), Text("core/parser.toy"));
  EXPECT_EQ(paths->find(999'999'999), std::nullopt);
  EXPECT_EQ(paths->values().size(), 3U) << "one for each symbol, though they share a file";
  const auto by_id = repository_.symbols_with_paths({id, 999'999'999, id});
  ASSERT_TRUE(by_id->find(id).has_value());
  EXPECT_EQ((*by_id->find(id))->fqn(), symbols[0]->fqn());
  EXPECT_EQ(by_id->find(999'999'999), std::nullopt);
  EXPECT_THAT(repository_.get_file_paths_batch({})->values(), IsEmpty());
  EXPECT_EQ(repository_.symbols_with_paths({})->find(id), std::nullopt);
}

TEST_P(RepositoryContract, TellsTestsAndWhatTheyCover) {
  const Text test = "tests/test_parser.toy";
  const auto tests = repository_.test_paths({"core/parser.toy", test, test, "missing"});
  EXPECT_TRUE(tests->contains(test));
  EXPECT_FALSE(tests->contains("core/parser.toy"));
  EXPECT_FALSE(tests->contains("missing"));
  EXPECT_THAT(repository_.test_paths({})->values(), IsEmpty());
  const auto covering = repository_.find_covering_tests({"core/parser.toy", "core/lexer.toy", "missing"});
  for (int walk = 0; walk < 2; ++walk) {
    std::vector<std::string> of_parser;
    covering->walk([&](const TestRecord& record) {
      if (const auto reached = record.alone("core/parser.toy"))
        of_parser.emplace_back(reached->path().view());
      EXPECT_EQ(record.alone("core/lexer.toy"), nullptr);
      EXPECT_EQ(record.alone("missing"), nullptr);
    });
    EXPECT_THAT(of_parser, ElementsAre(test.view())) << "walk " << walk;
  }
  repository_.find_covering_tests({})->walk(
      [](const TestRecord& record) { EXPECT_EQ(record.alone("missing"), nullptr); });
}

TEST_P(RepositoryContract, ListsTheFilesOfComponents) {
  const auto component = repository_.get_component_by_name("core-package");
  ASSERT_TRUE(component && component->id);
  std::vector<std::string> symbols;
  for (const File& file : repository_.get_files_by_component(*component->id)) {
    for (const SymbolPtr& symbol : repository_.get_symbols_by_file(*file.id))
      symbols.emplace_back(symbol->name().view());
  }
  EXPECT_THAT(symbols, ElementsAre("lex", "parse", "parse_line", "parse100"));
  EXPECT_EQ(repository_.get_component_by_name("missing"), std::nullopt);
  EXPECT_THAT(repository_.get_files_by_component(999), IsEmpty());
  EXPECT_THAT(repository_.get_symbols_by_file(999), IsEmpty());
}

TEST_P(RepositoryContract, KnowsWhoUsesASymbol) {
  const SymbolPtr parse = repository_.get_symbol_by_fqn("parse");
  ASSERT_NE(parse, nullptr);
  EXPECT_EQ(parse->signature(), Text("pub fn parse"));
  EXPECT_EQ(repository_.get_symbol_by_fqn("Parse"), nullptr);
  const References references = repository_.get_references("parse");
  ASSERT_EQ(references.references.size(), 2U);
  EXPECT_EQ(references.total, 2);
  const Reference& first = *references.references[0];
  EXPECT_EQ(first.usage_type(), "call");
  EXPECT_EQ(first.caller_symbol()->fqn, Text("lex")) << "production comes before tests";
  EXPECT_EQ(first.context(), Text("parse()"));
  EXPECT_EQ(repository_.get_references("missing").total, 0);
  const auto fan_in = repository_.production_fan_in({*parse->id(), *parse->id(), 999'999'999});
  ASSERT_TRUE(fan_in->find(*parse->id()).has_value());
  EXPECT_EQ(fan_in->find(*parse->id())->number, 1) << "tests do not count";
  EXPECT_EQ(fan_in->find(999'999'999).value_or(OrderKey{}).number, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Every, RepositoryContract,
    ::testing::Values(Implementation{"Fake", [] { return std::make_unique<FakeSubject>(); }},
                      Implementation{"Stored", [] { return std::make_unique<StoredSubject>(); }}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace tarnwick::testing
