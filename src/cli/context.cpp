// tarnwick context and tarnwick symbol: what the repository holds about a task, or of one symbol.
#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <memory>

#include "cli/commands.h"
#include "cli/explain.h"
#include "cli/failure.h"
#include "cli/indexed_repository.h"
#include "cli/options.h"
#include "index/read_pool.h"
#include "output/formats.h"
#include "output/messages.h"
#include "output/terminal.h"
#include "service/names.h"
#include "service/requests.h"
#include "service/symbol.h"
#include "service/task.h"
#include "text/surrogates.h"

namespace tarnwick::cli {
namespace {

/// What past commits add to a ranking is worth a short wait, once; the rest is read by later calls.
constexpr std::chrono::milliseconds HISTORY_PATIENCE{300};

constexpr const char* CONTEXT_HELP =
    "Examples:\n"
    "  tarnwick context Retry a request when the connection was reset\n"
    "  tarnwick context --snippets --budget 4000 \"Fix the race in ConnectionPool.acquire\"\n"
    "  tarnwick context --component web --no-tests --format markdown \"Cache the session\"\n"
    "  tarnwick context --seed http.client.Client.send \"What else changes with it?\"\n"
    "  tarnwick context -- --verbose prints too much\n"
    "\n"
    "Names that the task writes (read_file, HttpClient, src/util.py) weigh most: name what you know.\n"
    "The first call indexes the repository; later calls read only what changed since.\n"
    "Exit status: 0 a pack was printed, an empty one too; 2 the command line is wrong; 1 anything else.";

constexpr const char* SYMBOL_HELP =
    "Examples:\n"
    "  tarnwick symbol http.client.Client.send\n"
    "  tarnwick symbol --file src/area.cpp --line 5 area\n"
    "\n"
    "The first call indexes the repository; later calls read only what changed since.";

struct ContextOptions {
  RepositoryOptions repository;
  service::TaskRequest request;
  std::string format;
  bool explain = false;
};

struct SymbolOptions {
  RepositoryOptions repository;
  service::SymbolRequest request;
  std::string format;
};

/// Calls `work` with a view of the up-to-date index. A name that the index lacks becomes a Failure.
template <class View, class Work>
void over_index(const RepositoryOptions& options, const Work& work) {
  const Location location = locate(options);
  update(location, options, {.history = HISTORY_PATIENCE});
  over_sound_index(location, options, [&] {
    View view(index::ReadPool(location.index_file).take(), location.root);
    try {
      work(view, location);
    } catch (const service::UnknownName& error) {
      std::vector<std::string> help;
      if (!error.near().empty() && error.what_kind() != service::UnknownName::What::place)
        help.push_back(text::to_os("Near names: " + service::listed(error.near())));
      throw Failure(text::to_os(error.message()), help);
    }
  });
}

void warn(const service::Remark& remark) {
  const std::string option = remark.field.empty() ? "" : fmt::format("{}: ", option_name(remark.field));
  spdlog::warn("{}", output::visible(option + remark.text));
}

template <class View>
void run_context(const ContextOptions& options) {
  over_index<View>(options.repository, [&](View& view, const Location& location) {
    output::MessageLogger logger;
    service::Session session{view, {}, location.root, {}, &logger};
    if constexpr (requires(const Weighed& weighed) { view.explain(weighed, std::cerr); })
      session.on_weighed = [&](const Weighed& weighed) { view.explain(weighed, std::cerr); };
    service::TaskReport report = service::pack_of_task(options.request, session);
    for (const service::Remark& remark : report.remarks) warn(remark);
    if (report.pack.symbols.empty()) require_indexed_files(location);
    output::print(&report.pack, options.format);
  });
}

void run_symbol(const SymbolOptions& options) {
  over_index<service::StoredView>(
      options.repository, [&](const service::View& view, const Location& location) {
        output::MessageLogger logger;
        const auto report = service::show_symbol(options.request, {view, {}, location.root, {}, &logger});
        output::print(&report, options.format);
      });
}

/// What the two commands have in common.
template <class Options>
void declare(CLI::App& command, Options& options, const char* help) {
  command.footer(help);
  add_repository_options(command, options.repository);
  add_ignored_option(command, options.repository);
  add_options(command, service::fields_of(options.request));
  add_format_option(command, options.format);
}

}  // namespace

void declare_context(CLI::App& command) {
  const auto options = std::make_shared<ContextOptions>();
  declare(command, *options, CONTEXT_HELP);
  command.add_flag("--explain", options->explain,
                   "Tell on standard error why each symbol is in the pack or not");
  command.callback([options] {
    options->explain ? run_context<ExplainedView>(*options) : run_context<service::StoredView>(*options);
  });
}

void declare_symbol(CLI::App& command) {
  const auto options = std::make_shared<SymbolOptions>();
  declare(command, *options, SYMBOL_HELP);
  command.callback([options] { run_symbol(*options); });
}

}  // namespace tarnwick::cli
