#include "output/page.h"

#include <spdlog/fmt/fmt.h>

#include "output/terminal.h"
#include "resolution/reference_list.h"
#include "text/surrogates.h"
#include "text/white_space.h"

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

std::string described_parameter(const Parameter& parameter) {
  const std::string type = parameter.type ? fmt::format(" ({})", *parameter.type) : "";
  return readable(fmt::format("{}{}: {}", parameter.name, type, parameter.description));
}

std::string_view extension(std::string_view file) {
  const std::size_t name = file.rfind('/') + 1;  // 0 where there is no folder
  const std::size_t dot = file.rfind('.');
  return dot == std::string_view::npos || dot < name ? std::string_view() : file.substr(dot + 1);
}

std::string described(const RelatedSymbol& symbol) {
  return named(fmt::format("{} {}", symbol.kind.view(), symbol.fqn.view()));
}

void show_entry(const Entry& entry, std::size_t number, Page& page) {
  const Symbol& symbol = *entry.symbol;
  page.entry(number, named(symbol.kind()), named(symbol.fqn()),
             fmt::format("{}:{}", named(entry.file), symbol.start_line()));
  const std::string_view language = extension(entry.file);
  if (const OptionalText signature = symbol.signature(); has_text(signature))
    page.code(readable(*signature), language);
  if (const OptionalText docstring = symbol.docstring(); has_text(docstring))
    page.prose(readable(*docstring) + (symbol.docstring_truncated() ? " …" : ""));
  if (!entry.parameters.empty()) page.detail("Parameters", lines(entry.parameters, described_parameter));
  if (!entry.related.empty())
    page.detail("Related", {fmt::format("{}", fmt::join(lines(entry.related, described), ", "))});
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

std::string path_line(const Text& path) {
  return named(path);
}
std::string sentence(const Text& text) {
  return readable(text);
}
std::string test_line(const TestRow& row) {
  return named(fmt::format("{} (for {})", row.file.view(), row.source.view()));
}

void show_report(const ContextPack* pack, Page& page) {
  std::size_t number = 0;
  for (const Entry& entry : pack->symbols) show_entry(entry, ++number, page);
  page.section("Files", lines(pack->files, path_line));
  page.section("Tests", lines(pack->tests, test_line));
  page.section("Recommendations", lines(pack->recommendations, sentence));
  page.section("Notes", lines(pack->notes, sentence));
  page.closing(summary(*pack));
}

std::string reference_line(const ReferencePtr& reference) {
  std::string line = readable(reference->usage_type());
  if (const auto caller = reference->caller_symbol(); caller && has_text(caller->fqn))
    line += " in " + named(*caller->fqn);
  const auto* const placed = dynamic_cast<const resolution::PlacedReference*>(reference.get());
  if (const OptionalText path = placed == nullptr ? std::nullopt : placed->path())
    line += fmt::format("  {}:{}", named(*path), placed->line());
  if (const OptionalText context = reference->context()) line += "\n  " + readable(text::trim(*context));
  return line;
}

std::string other_line(const service::Namesake& other) {
  return named(fmt::format("{} {}:{}", other.kind.view(), other.path, other.line));
}

void show_report(const service::SymbolReport* report, Page& page) {
  const Entry& entry = report->pack.symbols.at(0);
  show_entry(entry, 1, page);
  page.code(readable(report->body) + (report->body_cut ? "\n…" : ""), extension(entry.file));
  page.section("References", lines(report->references.references, reference_line));
  page.section("Tests", lines(report->pack.tests, test_line));
  page.section("Others of that name", lines(report->others, other_line));
  page.section("Notes", lines(report->pack.notes, sentence));
  page.closing(count(static_cast<std::size_t>(report->references.total), "reference"));
}

}  // namespace

void show(const Report& report, Page& page) {
  std::visit([&](const auto* held) { show_report(held, page); }, report);
}

}  // namespace tarnwick::output
