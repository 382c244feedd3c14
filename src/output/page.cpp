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

/// Hands each part of an entry to a page.
class EntryVisitor {
 public:
  EntryVisitor(Page& page, std::string_view language) : page_(page), language_(language) {}

  void operator()(std::string_view key, const OptionalText& text) {
    if (!has_text(text)) return;
    if (key == "signature") page_.code(readable(*text), language_);
    if (key == "docstring") docstring_ = readable(*text);
  }
  void operator()(std::string_view key, bool set) {
    if (key == "docstring_truncated" && !docstring_.empty()) page_.prose(docstring_ + (set ? " …" : ""));
    if (key == "has_tests" && set) page_.detail("Has tests", {});
  }
  void operator()(std::string_view key, const Text& text) {
    if (key == "usage_example") page_.detail("Usage", {readable(text)});
  }
  void operator()(std::string_view /*key*/, const std::vector<Parameter>& parameters) {
    page_.detail("Parameters", lines(parameters, describe));
  }
  void operator()(std::string_view /*key*/, const std::vector<RelatedSymbol>& related) {
    const auto symbols = lines(related, [](const RelatedSymbol& symbol) {
      return named(fmt::format("{} {}", symbol.kind.view(), symbol.fqn.view()));
    });
    page_.detail("Related", {fmt::format("{}", fmt::join(symbols, ", "))});
  }
  void operator()(std::string_view /*key*/, const std::string& snippet) {
    page_.code(readable(snippet), language_);
  }
  void operator()(std::string_view /*key*/, std::int64_t /*line*/) {}  // part of the heading

 private:
  Page& page_;
  std::string_view language_;
  std::string docstring_;
};

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
  for (const Entry& entry : pack.symbols) {
    const std::string place = fmt::format("{}:{}", named(entry.file), entry.symbol->start_line());
    page.entry(++number, named(entry.symbol->kind()), named(entry.symbol->fqn()), place);
    entry.visit(EntryVisitor(page, extension(entry.file)));
  }
  page.section("Files", lines(pack.files, path));
  page.section("Tests", lines(pack.tests, [](const TestRow& row) {
                 return named(fmt::format("{} (for {})", row.file.view(), row.source.view()));
               }));
  page.section("Recommendations", lines(pack.recommendations, sentence));
  page.section("Notes", lines(pack.notes, sentence));
  page.closing(summary(pack));
}

}  // namespace tarnwick::output
