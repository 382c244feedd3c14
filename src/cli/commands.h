// The commands of the program.
#pragma once

#include <CLI/CLI.hpp>

namespace tarnwick::cli {

/// Each gives `command` the options and the help of one command, and the callback that does its work once the
/// command line is known to be right. The callback throws Failure or Interrupted, or lets an error of what it
/// uses pass.
void declare_context(CLI::App& command);
void declare_symbol(CLI::App& command);
void declare_index(CLI::App& command);
void declare_status(CLI::App& command);
void declare_mcp(CLI::App& command);

}  // namespace tarnwick::cli
