#include "output/page.h"

#include <spdlog/fmt/fmt.h>

#include "output/terminal.h"
#include "text/surrogates.h"

namespace tarnwick::output {
namespace {

std::string readable(std::string_view text) {
  return visible(text::replace_surrogates(text));
}

/// A name or a path, which may hold any character but must not pass for two of them.
std::string named(std::string_view text) {
  return visible_on_one_line(text::replace_surrogates(text));
}

template <class Item, class Line>
std::vector<std::string> lines(const std::vector<Item>& items, Line line) {
  std::vector<std::string> result;
  result.reserve(items.size());
  for (const Item& item : items) result.push_back(line(item));
  return result;
}

std::string describe(const Parameter& parameter) {
  const std::string type = parameter.type ? fmt::format(" ({})", *parameter.type) : "";
  return readable(fmt::format("{}{}: {}", parameter.name, type, parameter.description));
}

std::string_view extension(std::string_view file) {
  const std::size_t name = file.rfind('/') + 1;  // 0 where there is no folder
  const std::size_t dot = file.rfind('.');
  return dot == std::string_view::npos || dot < name ? std::string_view() : file.substr(dot + 1);
}

std::string kind_and_name(const RelatedSymbol& symbol) {
  return named(fmt::format("{} {}", symbol.kind.view(), symbol.fqn.view()));
}

void show(const Entry& entry, std::size_t number, Page& page) {
  const Symbol& symbol = *entry.symbol;
  const std::string_view language = extension(entry.file);
  page.entry(number, named(symbol.kind()), named(symbol.fqn()),
             fmt::format("{}:{}", named(entry.file), symbol.start_line()));
  if (has_text(symbol.signature())) page.code(readable(*symbol.signature()), language);
  if (has_text(symbol.docstring()))
    page.prose(readable(*symbol.docstring()) + (symbol.docstring_truncated() ? " …" : ""));
  if (!entry.parameters.empty()) page.detail("Parameters", lines(entry.parameters, describe));
  if (!entry.related.empty())
    page.detail("Related", {fmt::format("{}", fmt::join(lines(entry.related, kind_and_name), ", "))});
  if (!entry.usage_example.empty()) page.detail("Usage", {readable(entry.usage_example)});
  if (entry.has_tests) page.detail("Has tests", {});
  if (!entry.snippet.empty()) page.code(readable(entry.snippet), language);
}

std::string count(std::size_t number, std::string_view noun) {
  return fmt::format("{} {}{}", number, noun, number == 1 ? "" : "s");
}

std::string summary(const ContextPack& pack) {
  std::string line = fmt::format("{} in {}, {} tokens", count(pack.symbols.size(), "symbol"),
                                 count(pack.files.size(), "file"), pack.tokens_used);
  if (pack.indexing_in_progress)
    line += fmt::format("; the index is still being built ({} %)", pack.progress);
  return line;
}

}  // namespace

void show(const ContextPack& pack, Page& page) {
  const auto path = [](const Text& text) { return named(text); };
  const auto sentence = [](const Text& text) { return readable(text); };
  std::size_t number = 0;
  for (const Entry& entry : pack.symbols) show(entry, ++number, page);
  page.section("Files", lines(pack.files, path));
  page.section("Tests", lines(pack.tests, [](const TestRow& row) {
                 return named(fmt::format("{} (for {})", row.file.view(), row.source.view()));
               }));
  page.section("Recommendations", lines(pack.recommendations, sentence));
  page.section("Notes", lines(pack.notes, sentence));
  page.closing(summary(pack));
}

}  // namespace tarnwick::output
