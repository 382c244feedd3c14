#include "mcp/handlers.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "mcp/confined_repository.h"
#include "output/json.h"
#include "output/messages.h"
#include "retrieval/task_words.h"
#include "service/deep_symbols.h"
#include "tarnwick/workers/context_builder.h"
#include "text/surrogates.h"
#include "text/utf8.h"

namespace tarnwick::mcp {
namespace {

constexpr std::size_t NEAR_NAMES = 5;
constexpr std::int64_t MOST_LIKE_NAMED = 50;
constexpr std::size_t MOST_COMPONENTS = 20;
constexpr std::size_t MOST_PLACES = 20;
constexpr std::int64_t MOST_REFERENCES = 30;
constexpr std::int64_t MOST_BODY_LINES = 800;
constexpr std::size_t MOST_BODY_BYTES = 48000;  // some 12,000 tokens
/// Enough for any entry: a symbol asked for by its name is never left out.
constexpr std::int64_t NO_CEILING = std::int64_t{1} << 40U;

/// The component's warnings, for whoever reads the log of the server. A call that is over ends its queries
/// with errors, which are no news.
class LogSink final : public Logger {
 public:
  explicit LogSink(const Call& call) : call_(call) {}

  void warning(std::string_view message, std::string_view argument,
               const std::exception_ptr& error) override {
    if (!call_.over()) spdlog::warn("{}", output::warning_text(message, argument, error));
  }

 private:
  const Call& call_;
};

std::string listed(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list;
}

/// What may help whoever named something that is not there.
std::string hint(const std::string& near, const Indexing& indexing, std::string_view otherwise) {
  std::string text = near.empty() ? ". " + std::string(otherwise) : ". Near names: " + near + ".";
  if (indexing.in_progress) {
    text += " Files are still being indexed (" + std::to_string(indexing.progress) + " %): try again later.";
  }
  return text;
}

std::string last_name(std::string_view fqn) {
  const std::size_t last = fqn.find_last_of(".:/#");
  return std::string(last == std::string_view::npos ? fqn : fqn.substr(last + 1));
}

std::string symbols_near(const Repository& repository, std::string_view fqn) {
  const std::string name = last_name(fqn);
  if (name.empty()) return {};
  std::vector<std::string> near;
  for (const SymbolPtr& symbol : repository.search_symbols("%" + name + "%", NEAR_NAMES, false).symbols) {
    near.push_back(text::replace_surrogates(symbol->fqn()));
  }
  return listed(near);
}

[[noreturn]] void refuse_symbol(const View& view, const std::string& fqn, const Indexing& indexing) {
  throw BadArguments("Unknown symbol: " + fqn +
                     hint(symbols_near(view.repository(), fqn), indexing,
                          "Take `fqn` from a pack; action \"task\" finds symbols."));
}

/// All symbols that packs show under this name: a file name that is no UTF-8 shows with U+FFFD in it.
std::vector<SymbolPtr> symbols_named(const View& view, const std::string& fqn) {
  std::vector<SymbolPtr> found = view.symbols_by_fqn(fqn);
  if (!found.empty() || fqn.find("\uFFFD") == std::string::npos) return found;
  const std::string pattern = "%" + last_name(fqn) + "%";
  for (const SymbolPtr& symbol : view.repository().search_symbols(pattern, MOST_LIKE_NAMED, false).symbols) {
    if (text::replace_surrogates(symbol->fqn()) == fqn) return view.symbols_by_fqn(symbol->fqn());
  }
  return {};
}

std::vector<Text> texts(const std::vector<std::string>& strings) {
  return {strings.begin(), strings.end()};
}

BuildOptions build_options(const Source& source, const TaskArguments& task) {
  BuildOptions options;
  options.token_budget = task.token_budget;
  options.component_filter = task.component_filter;
  options.include_snippets = task.include_snippets;
  options.repo_root = Text(text::from_os(source.root().native()));
  options.prefer_kinds = texts(task.prefer_kinds);
  options.source_only = task.source_only;
  options.wide_match = task.wide_match;
  service::ask_for_bodies(texts(task.deep_fqns), options);
  return options;
}

/// The symbols that are to lead the pack. A qualified name that several bear stands for the first of them.
SeedSymbols seeds_of(const View& view, const TaskArguments& task, const Indexing& indexing) {
  if (!task.seed_symbols) return {};
  std::vector<SymbolPtr> seeds;
  for (const std::string& fqn : *task.seed_symbols) {
    const std::vector<SymbolPtr> found = symbols_named(view, fqn);
    if (found.empty()) refuse_symbol(view, fqn, indexing);
    seeds.push_back(found.front());
  }
  return seeds;
}

void note_missing_bodies(const View& view, const TaskArguments& task, ContextPack& pack) {
  for (const std::string& line : service::missing_bodies(view.repository(), texts(task.deep_fqns), pack))
    pack.notes.emplace_back("deep_fqns: " + line);
}

/// That a pack is empty for its budget alone is not to be taken for absence.
void note_too_dear(std::int64_t least_cost, ContextPack& pack) {
  if (!pack.symbols.empty() || least_cost == NO_CEILING) return;
  pack.notes.emplace_back(
      "Symbols match, but token_budget leaves no room for one: raise it. The smallest costs " +
      std::to_string(least_cost) + " tokens.");
}

void note_failure(const Indexing& indexing, ContextPack& pack) {
  if (!indexing.failure) return;
  pack.notes.emplace_back((indexing.whole ? "The index may be out of date: "
                                          : "The repository could not be indexed, so code is missing: ") +
                          *indexing.failure);
}

/// A body that fits a result, cut at the end of a line where it is too long.
std::string_view fitting(std::string_view body) {
  if (body.size() <= MOST_BODY_BYTES) return body;
  const std::string_view head = body.substr(0, MOST_BODY_BYTES);
  std::size_t end = head.rfind('\n');
  if (end == std::string_view::npos) {
    end = head.size();
    while (end > 0 && text::is_continuation(body[end])) --end;
  }
  return body.substr(0, end);
}

Json reference_json(const Reference& reference) {
  Json json = {{"usage_type", output::to_json(reference.usage_type())}};
  if (const std::optional<CallerSymbol> caller = reference.caller_symbol()) {
    if (has_text(caller->fqn)) json["caller"] = output::to_json(caller->fqn);
    if (has_text(caller->kind)) json["caller_kind"] = output::to_json(caller->kind);
  }
  if (const OptionalText path = reference.path()) {
    json["file"] = output::to_json(path);
    if (const auto line = reference.line()) json["line"] = *line;
  }
  if (const OptionalText context = reference.context()) json["context"] = output::to_json(context);
  return json;
}

Json references_json(const References& references) {
  Json json = Json::array();
  for (const ReferencePtr& reference : references.references) {
    if (json.size() == MOST_REFERENCES) break;
    json.push_back(reference_json(*reference));
  }
  return json;
}

std::string path_of(const Symbol& symbol, const PathMap& paths) {
  const OptionalText path = paths.find(symbol.id().value_or(0));
  return path ? text::replace_surrogates(*path) : std::string();
}

/// Of several that bear the name, puts the one at the wanted place first.
void lead_with_wanted(const SymbolArguments& wanted, const PathMap& paths, std::vector<SymbolPtr>& found) {
  const auto is_there = [&](const SymbolPtr& symbol) {
    return (!wanted.file || path_of(*symbol, paths) == *wanted.file) &&
           (!wanted.line || symbol->start_line() == *wanted.line);
  };
  const auto chosen = std::find_if(found.begin(), found.end(), is_there);
  if (chosen != found.end()) return void(std::rotate(found.begin(), chosen, chosen + 1));
  std::vector<std::string> places;
  for (const SymbolPtr& symbol : found) {
    if (places.size() == MOST_PLACES) break;
    places.push_back(path_of(*symbol, paths) + ":" + std::to_string(symbol->start_line()));
  }
  throw BadArguments(wanted.fqn + " is not there, but at: " + listed(places));
}

/// A pack of one symbol, with its body whatever that costs.
ContextPack pack_of(const ContextBuilder& builder, const Repository& repository, const SymbolPtr& symbol,
                    const Source& source) {
  const auto paths = repository.get_file_paths_batch({symbol});
  const OptionalText path = symbol->id() ? paths->find(*symbol->id()) : std::nullopt;
  PackOptions options;
  options.include_snippets = true;
  options.repo_root = Text(text::from_os(source.root().native()));
  options.deep_fqns.insert(symbol->fqn());
  options.deep_max_lines = MOST_BODY_LINES;
  return builder._build_pack({{symbol, 0, path}}, NO_CEILING, options);
}

Json symbol_json(const ContextPack& pack, const Entry& entry, const References& references) {
  Json json = output::to_json(entry);
  json.erase("snippet");
  json["end_line"] = entry.symbol->end_line();
  const std::string_view body = fitting(entry.snippet);
  const std::int64_t lines = entry.symbol->end_line() - entry.symbol->start_line() + 1;
  json["body"] = body;
  json["body_truncated"] = body.size() < entry.snippet.size() || lines > MOST_BODY_LINES;
  json["references"] = references_json(references);
  json["references_total"] = references.total;
  json["tests"] = Json::array();
  for (const TestRow& row : pack.tests) json["tests"].push_back(output::to_json(row.file));
  return json;
}

Json languages_json(const index::IndexStatus& status) {
  Json json = Json::array();
  for (const index::LanguageStatus& language : status.languages) {
    json.push_back({{"language", language.language},
                    {"files", language.files},
                    {"symbols", language.symbols},
                    {"references", language.references},
                    {"files_with_syntax_errors", language.with_errors}});
  }
  return json;
}

Json components_json(const index::IndexStatus& status) {
  std::vector<index::ComponentStatus> largest = status.components;
  std::stable_sort(largest.begin(), largest.end(),
                   [](const auto& a, const auto& b) { return a.files > b.files; });
  Json json = Json::array();
  for (const index::ComponentStatus& component : largest) {
    if (json.size() == MOST_COMPONENTS) break;
    json.push_back({{"name", output::to_json(Text(component.name))},
                    {"path", output::to_json(Text(component.path))},
                    {"files", component.files}});
  }
  return json;
}

void add_contents(const index::IndexStatus& status, Json& json) {
  if (status.indexed_at) json["indexed_at"] = *status.indexed_at;
  if (status.git_head) json["git_head"] = *status.git_head;
  json["languages"] = languages_json(status);
  json["left_out"] = Json::array();
  for (const auto& [reason, files] : status.skipped) {
    json["left_out"].push_back({{"reason", reason}, {"files", files}});
  }
  json["components"] = components_json(status);
  json["components_total"] = status.components.size();
}

}  // namespace

Json build_pack(Source& source, const TaskArguments& task, const Call& call) {
  constexpr double STEPS = 3;
  call.report(0, STEPS, "Looking for changed files");
  const Indexing indexing = source.refresh(call);
  const std::unique_ptr<View> view = source.view(call);
  call.report(1, STEPS, "Ranking symbols");
  const ConfinedRepository repository(view->repository(), source.root());
  const retrieval::QueryTokenizer tokenizer;
  LogSink log(call);
  ContextBuilder builder(repository, tokenizer, view->retriever(), true, {.logger = &log});
  builder.set_indexing_status(indexing.in_progress, indexing.progress);
  BuildOptions options = build_options(source, task);
  options.seed_symbols = seeds_of(*view, task, indexing);
  std::int64_t least_cost = NO_CEILING;
  options.on_weighed = [&](const Weighed& weighed) { least_cost = std::min(least_cost, weighed.cost); };
  try {
    ContextPack pack = builder.build_context_pack(task.task, options);
    note_missing_bodies(*view, task, pack);
    note_too_dear(least_cost, pack);
    note_failure(indexing, pack);
    call.report(STEPS, STEPS, "Done");
    return output::to_json(pack);
  } catch (const UnknownComponent& error) {
    const std::string near = listed(view->components_near(*task.component_filter));
    throw BadArguments(error.message() +
                       hint(near, indexing, "Action \"status\" lists the largest components."));
  }
}

Json show_symbol(Source& source, const SymbolArguments& symbol, const Call& call) {
  const Indexing indexing = source.refresh(call);
  const std::unique_ptr<View> view = source.view(call);
  std::vector<SymbolPtr> found = symbols_named(*view, symbol.fqn);
  if (found.empty()) refuse_symbol(*view, symbol.fqn, indexing);
  const ConfinedRepository repository(view->repository(), source.root());
  const auto paths = repository.get_file_paths_batch(found);
  lead_with_wanted(symbol, *paths, found);
  const retrieval::QueryTokenizer tokenizer;
  LogSink log(call);
  const ContextBuilder builder(repository, tokenizer, nullptr, true, {.logger = &log});
  const ContextPack pack = pack_of(builder, repository, found.front(), source);
  Json json = symbol_json(pack, pack.symbols.at(0), repository.get_references(found.front()->fqn()));
  for (auto other = found.begin() + 1; other != found.end(); ++other) {
    json["others"].push_back({{"kind", output::to_json((*other)->kind())},
                              {"file", path_of(**other, *paths)},
                              {"line", (*other)->start_line()}});
  }
  if (!pack.notes.empty()) json["notes"] = Json::array({output::to_json(pack.notes.front())});
  json["indexing_in_progress"] = indexing.in_progress;
  json["progress"] = indexing.progress;
  return json;
}

Json show_status(Source& source, const Call& call) {
  const Indexing indexing = source.refresh(call);
  Json json = {{"repository", source.name()},
               {"root", output::to_json(Text(text::from_os(source.root().native())))},
               {"indexing_in_progress", indexing.in_progress},
               {"progress", indexing.progress}};
  if (indexing.failure) json["failure"] = *indexing.failure;
  if (const auto status = source.view(call)->status()) add_contents(*status, json);
  return json;
}

}  // namespace tarnwick::mcp
