// tarnwick mcp: serves packs to agents over the standard streams.
#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigaction is POSIX's
#include <spdlog/fmt/fmt.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <system_error>

#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/indexed_repository.h"
#include "mcp/context_tool.h"
#include "mcp/serve.h"
#include "mcp/stored_source.h"
#include "text/surrogates.h"

namespace tarnwick::cli {
namespace fs = std::filesystem;
namespace {

struct McpOptions {
  std::vector<std::string> repos;
  std::string index;
  bool ignored = false;
  bool structured = false;
  bool unwatched = false;
};

std::vector<Location> locations_of(const McpOptions& options) {
  std::vector<std::string> directories = options.repos;
  if (directories.empty()) directories.emplace_back();
  std::vector<Location> locations;
  for (const std::string& directory : directories) {
    RepositoryOptions repository;
    repository.repo = directory;
    repository.index = options.index;
    Location location = locate(repository);
    const bool known = std::any_of(locations.begin(), locations.end(),
                                   [&](const Location& other) { return other.root == location.root; });
    if (!known) locations.push_back(std::move(location));
  }
  if (locations.size() > 1 && !options.index.empty()) {
    throw CLI::ValidationError("Several repositories cannot share the index file " + options.index +
                               " (--index or TARNWICK_INDEX)");
  }
  return locations;
}

/// The shortest end of the path that no other repository shares.
std::string name_of(const fs::path& root, const std::vector<Location>& all) {
  fs::path name = root.filename();
  for (fs::path above = root.parent_path(); above.has_filename(); above = above.parent_path()) {
    const auto ends_alike = [&](const Location& other) {
      return other.root.generic_string().ends_with("/" + name.generic_string());
    };
    if (std::count_if(all.begin(), all.end(), ends_alike) <= 1) break;
    name = above.filename() / name;
  }
  return text::replace_surrogates(text::from_os((name.empty() ? root : name).native()));
}

mcp::Sources sources_of(const McpOptions& options) {
  const std::vector<Location> locations = locations_of(options);
  mcp::Sources sources;
  for (const Location& location : locations) {
    indexing::IndexOptions update;
    update.root = location.root;
    update.include_ignored = options.ignored;
    update.extractor = &extractor();
    sources.push_back(std::make_unique<mcp::StoredSource>(
        name_of(location.root, locations), location.index().file(), std::move(update), !options.unwatched));
  }
  return sources;
}

/// The descriptor for messages. What anything else prints to standard output goes to standard error instead,
/// where it breaks no message.
int take_standard_output() {
  const int output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (output < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
    throw Failure("standard output: " + std::system_category().message(errno));
  }
  return output;
}

/// A standard input that is closed would be whatever is opened next, and never end.
void require_standard_input() {
  if (fcntl(STDIN_FILENO, F_GETFD) < 0)
    throw Failure("standard input: " + std::system_category().message(errno));
}

void run(const McpOptions& options) {
  require_standard_input();
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, nullptr);  // a client that is gone ends the loop, not the process
  const int output = take_standard_output();
  {
    const mcp::Sources sources = sources_of(options);
    const mcp::ContextTool tool(sources, options.structured);
    mcp::serve(STDIN_FILENO, output, tool, {.instructions = mcp::INSTRUCTIONS});
  }
  close(output);
}

/// This program as a client starts it. A name found along PATH would depend on the client's own environment.
std::string program_path() {
  std::error_code error;
  const fs::path path = fs::read_symlink("/proc/self/exe", error);
  return error ? "tarnwick" : path.string();
}

std::string help() {
  std::string repository = "/path/to/repository";
  try {
    repository = locate({}).root.string();
  } catch (const std::exception&) {  // a working directory that is gone; the example serves as well
  }
  const nlohmann::ordered_json configuration = {
      {"mcpServers", {{"tarnwick", {{"command", program_path()}, {"args", {"mcp", "--repo", repository}}}}}}};
  return "Configuration for clients that take the common form, for this machine and directory:\n\n" +
         configuration.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
         "\n\nSpeaks the Model Context Protocol on standard input and output, revisions 2024-11-05 to\n"
         "2026-07-28, until its input ends. Indexes in the background and follows changes of files. "
         "Messages\n"
         "go to standard error. Nothing outside the named repositories is read, but the index in the cache\n"
         "folder; nothing is sent anywhere.";
}

}  // namespace

void declare_mcp(CLI::App& command) {
  const auto options = std::make_shared<McpOptions>();
  command.footer(help());
  command
      .add_option("--repo", options->repos,
                  "A repository to serve; repeatable; default: the one around the working directory")
      ->type_name("DIR")
      ->check(named())
      ->allow_extra_args(false);
  command
      .add_option("--index", options->index,
                  "The index file, of one repository alone; default: one for each in the cache folder")
      ->type_name("FILE")
      ->check(named())
      ->envname("TARNWICK_INDEX");
  command.add_flag("--ignored", options->ignored, "Read the files that git ignores too");
  command.add_flag("--no-watch", options->unwatched,
                   "Look for changed files at each call instead of being told, as on network file systems");
  command.add_flag("--structured", options->structured,
                   "Send results as structured content too, with a schema of them");
  command.callback([options] { run(*options); });
}

}  // namespace tarnwick::cli
