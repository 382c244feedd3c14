#include "service/symbol.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "retrieval/task_words.h"
#include "service/names.h"
#include "text/surrogates.h"
#include "text/utf8.h"

namespace tarnwick::service {
namespace {

constexpr std::size_t MAX_PLACES = 20;
constexpr std::size_t MAX_REFERENCES = 30;
constexpr std::int64_t MAX_BODY_LINES = 800;
constexpr std::size_t MAX_BODY_BYTES = 48000;  // some 12,000 tokens
/// Enough for any entry: a symbol asked for by its name is never left out.
constexpr std::int64_t NO_CEILING = std::int64_t{1} << 40U;

/// A body that fits a result, cut at the end of a line where it is too long.
std::string_view fitting(std::string_view body) {
  if (body.size() <= MAX_BODY_BYTES) return body;
  const std::string_view head = body.substr(0, MAX_BODY_BYTES);
  std::size_t end = head.rfind('\n');
  if (end == std::string_view::npos) {
    end = head.size();
    while (end > 0 && text::is_continuation(body[end])) --end;
  }
  return body.substr(0, end);
}

/// A pack of one symbol, with its body whatever that costs.
ContextPack pack_of(const SymbolPtr& symbol, const PathMap& paths, const Session& session) {
  const retrieval::QueryTokenizer tokenizer;
  const ContextBuilder builder(session.view.repository(), tokenizer, nullptr, true,
                               {.logger = session.logger});
  const OptionalText path = symbol->id() ? paths.find(*symbol->id()) : std::nullopt;
  PackOptions options;
  options.include_snippets = true;
  options.repo_root = Text(text::from_os(session.root.native()));
  options.deep_fqns.insert(symbol->fqn());
  options.deep_max_lines = MAX_BODY_LINES;
  return builder._build_pack({{symbol, 0, path}}, NO_CEILING, options);
}

std::vector<Namesake> namesakes_of(const std::vector<SymbolPtr>& symbols, const PathMap& paths) {
  std::vector<Namesake> namesakes;
  for (const SymbolPtr& symbol : symbols) {
    const OptionalText path = paths.find(symbol->id().value_or(0));
    namesakes.push_back({symbol->kind(), path ? text::replace_surrogates(*path) : "", symbol->start_line()});
  }
  return namesakes;
}

/// Which of several symbols of the name is wanted: the first at the place that is asked for.
std::size_t choose(const SymbolRequest& wanted, const std::vector<Namesake>& symbols) {
  const auto is_there = [&](const Namesake& symbol) {
    return (!wanted.file || symbol.path == text::replace_surrogates(*wanted.file)) &&
           (!wanted.line || symbol.line == *wanted.line);
  };
  const auto chosen = std::find_if(symbols.begin(), symbols.end(), is_there);
  if (chosen != symbols.end()) return static_cast<std::size_t>(chosen - symbols.begin());
  std::vector<std::string> places;
  for (const Namesake& symbol : symbols) {
    if (places.size() == MAX_PLACES) break;
    places.push_back(symbol.path + ":" + std::to_string(symbol.line));
  }
  throw UnknownName(UnknownName::What::place, wanted.fqn, std::move(places));
}

/// Takes the code out of the pack, as much of it as fits.
void take_body(SymbolReport& report) {
  Entry& entry = report.pack.symbols.at(0);
  const std::int64_t lines = entry.symbol->end_line() - entry.symbol->start_line() + 1;
  report.body = fitting(entry.snippet);
  report.body_cut = report.body.size() < entry.snippet.size() || lines > MAX_BODY_LINES;
  entry.snippet.clear();
}

}  // namespace

SymbolReport show_symbol(const SymbolRequest& request, const Session& session) {
  const std::vector<SymbolPtr> found = symbols_named(session.view, request.fqn);
  const Repository& repository = session.view.repository();
  const auto paths = repository.get_file_paths_batch(found);
  SymbolReport report;
  report.others = namesakes_of(found, *paths);
  const std::size_t chosen = choose(request, report.others);
  report.others.erase(report.others.begin() + static_cast<std::ptrdiff_t>(chosen));
  report.pack = pack_of(found[chosen], *paths, session);
  take_body(report);
  report.references = repository.get_references(found[chosen]->fqn());
  if (report.references.references.size() > MAX_REFERENCES)
    report.references.references.resize(MAX_REFERENCES);
  report.indexing = session.indexing;
  return report;
}

}  // namespace tarnwick::service
