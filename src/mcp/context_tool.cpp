#include "mcp/context_tool.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <string>

#include "index/errors.h"
#include "mcp/output_schema.h"
#include "text/surrogates.h"

namespace tarnwick::mcp {
namespace {

constexpr std::string_view DESCRIPTION =
    "Finds the code that matters for a task, in milliseconds, from an index that follows the files. Call it "
    "first for any question about this code base, before searching or reading files.\n"
    "\n"
    "action \"task\": give `task` in plain words; names, paths and error texts that you know weigh most. The "
    "answer is a context pack, one JSON object: `symbols`, best first (qualified name `fqn`, kind, file, "
    "line, signature, docstring, related symbols, a usage example; code as `snippet` with "
    "`include_snippets`), `files`, and `tests` that cover the first files. Read the named places next.\n"
    "action \"symbol\": one symbol in full by its `fqn` from a pack (`file` and `line` choose among "
    "overloads): "
    "signature, docstring, body, references, tests.\n"
    "action \"status\": what is indexed: languages, largest components, files left out.\n"
    "\n"
    "Follow `recommendations`: they say how to go on from a thin pack. Heed `notes`: they say what could not "
    "be done, so that a gap is not taken for absence. With `indexing_in_progress` true the index is being "
    "built (`progress` percent) and code may be missing: ask again later.";

std::string names_of(const Sources& sources) {
  std::string names;
  for (const auto& source : sources) names += (names.empty() ? "" : ", ") + source->name();
  return names;
}

Json define(const Sources& sources, bool structured) {
  Json tool = {{"name", "context"}, {"title", "Code context"}, {"description", DESCRIPTION}};
  tool["inputSchema"] = input_schema();
  auto& repository = tool["inputSchema"]["properties"]["repository"]["description"];
  repository = repository.get<std::string>() + " Served: " + names_of(sources) + ".";
  if (structured) tool["outputSchema"] = output_schema();
  tool["annotations"] = {{"title", "Code context"},
                         {"readOnlyHint", true},
                         {"destructiveHint", false},
                         {"idempotentHint", true},
                         {"openWorldHint", false}};
  return tool;
}

/// Whether a client's path, however it is written and over whatever links, is that of `root`.
bool leads_to(const std::string& path, const std::filesystem::path& root) {
  std::error_code error;
  return std::filesystem::canonical(text::to_os(path), error) == root;
}

/// What `work` over a source answers. When its index turns out to be damaged, it is made anew for later
/// calls.
template <class Work>
Json renewing_damaged(Source& source, const Work& work) {
  using index::IndexError;
  try {
    return work();
  } catch (const IndexError& error) {
    if (error.kind() != IndexError::Kind::damaged) throw;
    source.renew(error);
    throw IndexError(error.kind(), std::string(error.what()) + ". It is being rebuilt: ask again soon.");
  }
}

Json text_result(const std::string& text, bool is_error) {
  return {{"content", Json::array({{{"type", "text"}, {"text", text}}})}, {"isError", is_error}};
}

}  // namespace

ContextTool::ContextTool(const Sources& sources, bool structured)
    : sources_(sources), structured_(structured), definition_(define(sources, structured)) {}

Json ContextTool::call(const Input& arguments, const Call& call) const {
  try {
    call.check();
    Json data = run(read_arguments(arguments), call);
    call.check();
    Json result = text_result(to_line(data), false);
    if (structured_) result["structuredContent"] = std::move(data);
    return result;
  } catch (const BadArguments& error) {
    return text_result(error.message(), true);
  } catch (const Cancelled&) {
    throw;
  } catch (const std::exception& error) {
    if (call.stop_token().stop_requested()) throw Cancelled();
    if (call.over())
      return text_result("The request took too long and was stopped. Ask again, or try a shorter task.",
                         true);
    spdlog::error("{}", error.what());
    return text_result(std::string("The index could not be read: ") + error.what(), true);
  }
}

Json ContextTool::run(const Arguments& arguments, const Call& call) const {
  if (std::holds_alternative<StatusArguments>(arguments.action)) return show_all(arguments, call);
  Source& source = this->source(arguments);
  return renewing_damaged(source, [&] {
    if (const auto* const symbol = std::get_if<SymbolArguments>(&arguments.action))
      return show_symbol(source, *symbol, call);
    return build_pack(source, std::get<TaskArguments>(arguments.action), call);
  });
}

Json ContextTool::show_all(const Arguments& arguments, const Call& call) const {
  const Source* const wanted = arguments.repository ? &source(arguments) : nullptr;
  Json all = Json::array();
  for (const auto& source : sources_) {
    if (wanted != nullptr && wanted != source.get()) continue;
    all.push_back(renewing_damaged(*source, [&] { return show_status(*source, call); }));
  }
  return {{"repositories", std::move(all)}};
}

Source& ContextTool::source(const Arguments& arguments) const {
  if (!arguments.repository && sources_.size() == 1) return *sources_.front();
  if (!arguments.repository) {
    throw BadArguments("Several repositories are served: name one as \"repository\": " + names_of(sources_));
  }
  const auto found = std::find_if(sources_.begin(), sources_.end(), [&](const auto& source) {
    return source->name() == *arguments.repository || leads_to(*arguments.repository, source->root());
  });
  if (found == sources_.end()) {
    throw BadArguments("Unknown repository: " + *arguments.repository + ". Served: " + names_of(sources_));
  }
  return **found;
}

}  // namespace tarnwick::mcp
