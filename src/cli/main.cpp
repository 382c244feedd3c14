// The program: reads the command line, runs one command, and turns whatever went wrong into a line and a
// status.
#include <spdlog/fmt/fmt.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <iostream>

#include "cli/commands.h"
#include "cli/failure.h"
#include "output/messages.h"
#include "output/terminal.h"
#include "tarnwick/version.h"

namespace tarnwick::cli {
namespace {

struct Command {
  std::string_view name;
  const char* summary;
  void (*declare)(CLI::App& command);
};

constexpr std::array COMMANDS = {
    Command{"context", "Print the context pack of a task", declare_context},
    Command{"symbol", "Show one symbol in full: code, references, tests", declare_symbol},
    Command{"index", "Index what is missing or changed", declare_index},
    Command{"status", "Show what the index holds and what was left out", declare_status},
    Command{"mcp", "Serve packs to agents (Model Context Protocol)", declare_mcp},
};

constexpr const char* DESCRIPTION =
    "Assembles context packs: given a coding task in plain words, the code symbols of a\n"
    "repository that matter most to it, best first, within a token budget.";

constexpr const char* EXAMPLES =
    "\nExamples:\n"
    "  tarnwick context Retry a request when the connection was reset\n"
    "  tarnwick context --snippets --budget 4000 \"Fix the race in ConnectionPool.acquire\"\n"
    "  tarnwick context --repo ~/src/app --format json -- TASK | jq .files\n"
    "  tarnwick status\n"
    "\n"
    "tarnwick COMMAND --help tells more.";

int report(std::string_view line, const std::vector<std::string>& help = {}) {
  const output::Paint paint(output::may_colour(STDERR_FILENO));
  std::cerr << paint(output::Paint::RED, output::visible(line)) << '\n';
  for (const std::string& further : help) std::cerr << output::visible(further) << '\n';
  return FAILED;
}

std::string overview() {
  std::string text = "Commands:\n";
  for (const Command& command : COMMANDS) text += fmt::format("  {:<28}{}\n", command.name, command.summary);
  return text + EXAMPLES;
}

[[noreturn]] void refuse(const std::string& line) {
  throw CLI::ValidationError(line, CLI::ExitCodes::ValidationError);
}

void declare(CLI::App& app, const std::string& name) {
  const auto* const command = std::find_if(COMMANDS.begin(), COMMANDS.end(),
                                           [&](const Command& known) { return known.name == name; });
  if (command == COMMANDS.end()) refuse("Unknown command: " + name);
  app.description(command->summary);
  app.name(fmt::format("tarnwick {}", name));
  command->declare(app);
}

void parse(CLI::App& app, std::vector<std::string> arguments) {
  std::reverse(arguments.begin(), arguments.end());  // the order in which the parser takes a vector
  app.parse(std::move(arguments));
}

/// A command has a parser of its own instead of being a subcommand of the program's, since a subcommand that
/// has a word of its task leaves "--" to its parent.
int run(std::vector<std::string> arguments) {
  CLI::App program(DESCRIPTION, "tarnwick COMMAND");
  CLI::App command;
  const CLI::App* parsing = &program;
  program.footer(overview());
  program.set_version_flag("--version", fmt::format("tarnwick {}", VERSION));
  program.prefix_command();
  try {
    parse(program, std::move(arguments));
    arguments = program.remaining();
    if (arguments.empty()) refuse("A command is required");
    declare(command, arguments.front());
    parsing = &command;
    arguments.erase(arguments.begin());
    parse(command, std::move(arguments));
  } catch (const CLI::ParseError& error) {
    if (parsing->exit(error, std::cout, std::cerr) != 0) return USAGE;
  }
  std::cout.flush();
  if (!std::cout) throw Failure("The output could not be written");
  return DONE;
}

int guarded_run(std::vector<std::string> arguments) {
  try {
    return run(std::move(arguments));
  } catch (const Interrupted& error) {
    report("Interrupted");
    return error.exit_status();
  } catch (const Failure& error) {
    return report(error.what(), error.help());
  } catch (const std::bad_alloc&) {
    return report("Out of memory");
  } catch (const std::exception& error) {
    return report(error.what());
  }
}

}  // namespace
}  // namespace tarnwick::cli

int main(int argc, char** argv) {
  tarnwick::output::set_up_messages();
  return tarnwick::cli::guarded_run({argv + 1, argv + argc});
}
