// tarnwick context: prints the pack of a task.
#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <charconv>
#include <iostream>
#include <memory>

#include "cli/commands.h"
#include "cli/explain.h"
#include "cli/failure.h"
#include "cli/indexed_repository.h"
#include "output/formats.h"
#include "output/messages.h"
#include "output/terminal.h"
#include "repository/stored_repository.h"
#include "retrieval/index_retriever.h"
#include "retrieval/task_words.h"
#include "service/deep_symbols.h"
#include "tarnwick/workers/context_builder.h"
#include "text/surrogates.h"

namespace tarnwick::cli {
namespace {

constexpr std::int64_t DEFAULT_BUDGET = 2000;
constexpr std::size_t NEAR_NAMES = 5;
/// What past commits add to a ranking is worth a short wait, once; the rest is read by later calls.
constexpr std::chrono::milliseconds HISTORY_PATIENCE{300};

constexpr const char* HELP =
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

struct ContextOptions {
  RepositoryOptions repository;
  std::vector<std::string> task;
  std::int64_t budget = DEFAULT_BUDGET;
  std::string component;
  std::vector<std::string> deep, prefer, seeds;
  std::string format;
  bool snippets = false, wide = false, all_files = false, no_tests = false, explain = false;
};

Text given(const std::string& argument) {
  return text::from_os(argument);
}

std::vector<std::string> known_kinds() {
  std::vector<std::string> kinds;
  kinds.reserve(ContextBuilder::KIND_WEIGHTS.size());
  for (const auto& [kind, weight] : ContextBuilder::KIND_WEIGHTS) kinds.emplace_back(kind);
  return kinds;
}

/// Lines that may help whoever misspelled a name.
std::vector<std::string> did_you_mean(const std::vector<std::string>& near) {
  if (near.empty()) return {};
  return {text::to_os(fmt::format("Near names: {}", fmt::join(near, ", ")))};
}

std::vector<std::string> symbols_near(const Repository& repository, const std::string& fqn) {
  const std::size_t last = fqn.find_last_of(".:/#");
  const std::string name = last == std::string::npos ? fqn : fqn.substr(last + 1);
  std::vector<std::string> near;
  if (name.empty()) return near;
  for (const SymbolPtr& symbol :
       repository.search_symbols("%" + text::from_os(name) + "%", NEAR_NAMES, false).symbols) {
    near.emplace_back(symbol->fqn().view());
  }
  return near;
}

std::vector<SymbolPtr> seeds_of(const Repository& repository, const std::vector<std::string>& fqns) {
  std::vector<SymbolPtr> seeds;
  for (const std::string& fqn : fqns) {
    seeds.push_back(repository.get_symbol_by_fqn(given(fqn)));
    if (!seeds.back()) throw Failure("Unknown symbol: " + fqn, did_you_mean(symbols_near(repository, fqn)));
  }
  return seeds;
}

std::vector<Text> texts(const std::vector<std::string>& arguments) {
  std::vector<Text> texts;
  texts.reserve(arguments.size());
  for (const std::string& argument : arguments) texts.push_back(given(argument));
  return texts;
}

BuildOptions build_options(const ContextOptions& options, const Location& location,
                           const Repository& repository) {
  BuildOptions build;
  build.token_budget = options.budget;
  build.component_filter = given(options.component);
  build.include_snippets = options.snippets;
  build.repo_root = given(location.root.string());
  build.prefer_kinds = texts(options.prefer);
  build.source_only = !options.all_files;
  build.wide_match = options.wide;
  service::ask_for_bodies(texts(options.deep), build);
  if (!options.seeds.empty()) build.seed_symbols = seeds_of(repository, options.seeds);
  return build;
}

void print(ContextPack& pack, std::string format) {
  if (format.empty()) format = output::is_terminal(STDOUT_FILENO) ? "text" : "json";
  if (format == "json") {
    output::print_json(pack, std::cout);
  } else if (format == "markdown") {
    output::print_markdown(pack, std::cout);
  } else {
    output::print_text(pack, std::cout, output::may_colour(STDOUT_FILENO));
  }
}

/// Puts a number in its plain form. The parser's own conversion takes 010 for 8, nothing for 0, and what
/// passes 64 bits for the greatest number.
std::string to_decimal(std::string& digits) {
  std::int64_t number = 0;
  const char* const end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, number);
  if (result.ec == std::errc::result_out_of_range) return "Out of range: " + digits;
  if (result.ec != std::errc() || result.ptr != end) return "Not a whole number: " + digits;
  digits = std::to_string(number);
  return "";
}

Text task_of(const ContextOptions& options) {
  return given(fmt::format("{}", fmt::join(options.task, " ")));
}

ContextPack build(const ContextOptions& options, const Location& location) {
  const repository::StoredRepository repository = location.store->open();
  const retrieval::QueryTokenizer tokenizer;
  const retrieval::IndexRetriever retriever(repository.resolver());
  const ExplainedRetriever explained(retriever);
  const HybridRetriever& asked = options.explain ? static_cast<const HybridRetriever&>(explained) : retriever;
  output::MessageLogger logger;
  const ContextBuilder builder(repository, tokenizer, &asked, !options.no_tests, {.logger = &logger});
  BuildOptions choices = build_options(options, location, repository);
  Explanation explanation(explained, std::cerr);
  if (options.explain) choices.on_weighed = [&](const Weighed& weighed) { explanation.add(weighed); };
  try {
    ContextPack pack = builder.build_context_pack(task_of(options), choices);
    for (const std::string& line : service::missing_bodies(repository, texts(options.deep), pack))
      spdlog::warn("--deep: {}", output::visible(line));
    return pack;
  } catch (const UnknownComponent& error) {
    throw Failure(text::to_os(error.message()),
                  did_you_mean(repository.components_near(given(options.component))));
  }
}

void run(const ContextOptions& options) {
  const Location location = locate(options.repository);
  update(location, options.repository, {.history = HISTORY_PATIENCE});
  over_sound_index(location, options.repository, [&] {
    ContextPack pack = build(options, location);
    if (pack.symbols.empty()) require_indexed_files(location);
    print(pack, options.format);
  });
}

}  // namespace

void declare_context(CLI::App& command) {
  const auto options = std::make_shared<ContextOptions>();
  command.footer(HELP);
  add_repository_options(command, options->repository);
  add_ignored_option(command, options->repository);
  command.add_option("TASK", options->task, "The task in plain words; words are joined by blanks")
      ->required();
  command.add_option("--budget", options->budget, "Tokens that the pack may cost (kept within 5 %)")
      ->type_name("N")
      ->transform(CLI::Validator(to_decimal, ""))
      ->capture_default_str();
  command
      .add_option("--component", options->component,
                  "Only symbols of this component (package), by its name or its path")
      ->type_name("NAME");
  command.add_flag("--snippets", options->snippets, "With the code of each symbol");
  command
      .add_option("--deep", options->deep, "Show this symbol's code in full; implies --snippets; repeatable")
      ->type_name("FQN")
      ->allow_extra_args(false);
  command.add_option("--prefer", options->prefer, "Weigh up symbols of this kind, such as class; repeatable")
      ->type_name("KIND")
      ->allow_extra_args(false)
      ->check(CLI::IsMember(known_kinds()))
      ->option_text("KIND ...");
  command.add_option("--seed", options->seeds, "Begin with this symbol instead of searching; repeatable")
      ->type_name("FQN")
      ->allow_extra_args(false);
  command.add_flag("--wide", options->wide, "Words match inside names too, not only whole names");
  command.add_flag("--all-files", options->all_files,
                   "Documentation and data files too, not only source code");
  command.add_flag("--no-tests", options->no_tests, "List no test files");
  command
      .add_option("--format", options->format,
                  "json, markdown or text; default: text on a terminal, else json")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"json", "markdown", "text"}));
  command.add_flag("--explain", options->explain,
                   "Tell on standard error why each symbol is in the pack or not");
  command.callback([options] { run(*options); });
}

}  // namespace tarnwick::cli
