#include "service/task.h"

#include <algorithm>
#include <optional>

#include "retrieval/task_words.h"
#include "service/names.h"
#include "text/surrogates.h"

namespace tarnwick::service {
namespace {

std::vector<Text> texts(const std::vector<std::string>& strings) {
  return {strings.begin(), strings.end()};
}

/// The symbols that are to lead the pack. A qualified name that several have means the first of them.
SeedSymbols seeds_of(const TaskRequest& request, const View& view) {
  if (!request.seed) return {};
  std::vector<SymbolPtr> seeds;
  for (const std::string& fqn : *request.seed) seeds.push_back(symbols_named(view, fqn).front());
  return seeds;
}

BuildOptions build_options(const TaskRequest& request, const Session& session) {
  BuildOptions options;
  options.token_budget = request.budget;
  if (request.component) options.component_filter = Text(*request.component);
  options.include_snippets = request.snippets || !request.deep.empty();
  options.repo_root = Text(text::from_os(session.root.native()));
  options.prefer_kinds = texts(request.prefer);
  options.source_only = !request.all_files;
  options.wide_match = request.wide;
  for (const std::string& fqn : request.deep) options.deep_fqns.insert(fqn);
  options.seed_symbols = seeds_of(request, session.view);
  return options;
}

/// A remark for each symbol whose code is asked for and missing.
void remark_missing_bodies(const TaskRequest& request, const View& view, TaskReport& report) {
  const std::vector<Entry>& shown = report.pack.symbols;
  for (const std::string& fqn : request.deep) {
    const auto is_it = [&](const Entry& entry) { return entry.symbol->fqn() == std::string_view(fqn); };
    if (std::any_of(shown.begin(), shown.end(), is_it)) continue;
    const std::string name = text::replace_surrogates(fqn);
    const bool known = view.repository().get_symbol_by_fqn(fqn) != nullptr;
    report.remarks.push_back({"deep", known ? name + " is not in the pack; named as a seed, it leads one"
                                            : "unknown symbol " + name});
  }
}

/// That a pack is empty for its budget alone is not to be taken for absence.
void remark_small_budget(std::optional<std::int64_t> least_cost, TaskReport& report) {
  if (!report.pack.symbols.empty() || !least_cost) return;
  report.remarks.push_back(
      {"budget", "symbols match, but there is no room for one: raise it. The smallest costs " +
                     std::to_string(*least_cost) + " tokens."});
}

void remark_failure(const Indexing& indexing, TaskReport& report) {
  if (!indexing.failure) return;
  report.remarks.push_back(
      {"", (indexing.whole ? "The index may be out of date: "
                           : "The repository could not be indexed, so code is missing: ") +
               *indexing.failure});
}

}  // namespace

TaskReport pack_of_task(const TaskRequest& request, const Session& session) {
  const View& view = session.view;
  const retrieval::QueryTokenizer tokenizer;
  ContextBuilder builder(view.repository(), tokenizer, view.retriever(), !request.no_tests,
                         {.logger = session.logger});
  builder.set_indexing_status(session.indexing.in_progress, session.indexing.progress);
  BuildOptions options = build_options(request, session);
  std::optional<std::int64_t> least_cost;
  options.on_weighed = [&](const Weighed& weighed) {
    least_cost = std::min(least_cost.value_or(weighed.cost), weighed.cost);
    if (session.on_weighed) session.on_weighed(weighed);
  };
  try {
    TaskReport report{builder.build_context_pack(request.task, options), {}};
    remark_missing_bodies(request, view, report);
    remark_small_budget(least_cost, report);
    remark_failure(session.indexing, report);
    return report;
  } catch (const UnknownComponent&) {
    throw UnknownName(UnknownName::What::component, *request.component,
                      view.components_near(*request.component));
  }
}

}  // namespace tarnwick::service
