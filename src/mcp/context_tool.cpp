#include "mcp/context_tool.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "index/errors.h"
#include "output/json_schema.h"
#include "output/messages.h"
#include "service/names.h"
#include "text/surrogates.h"

namespace tarnwick::mcp {
namespace {

constexpr std::string_view ABOUT =
    "Finds the code that matters for a task, in milliseconds, from an index that follows the files. Call it "
    "first for any question about this code base, before searching or reading files.\n\n";
constexpr std::string_view HOW_TO_GO_ON =
    "\nFollow `recommendations`: they say how to go on from a thin pack. Read `notes`: they say what could "
    "not "
    "be done, so that a gap is not taken for absence. With `indexing_in_progress` true the index is being "
    "built (`progress` percent) and code may be missing: ask again later.";

std::string description() {
  std::string text(ABOUT);
  for (const api::Action& action : api::actions())
    text += "action \"" + std::string(action.name) + "\": " + std::string(action.sentence) + "\n";
  return text.append(HOW_TO_GO_ON);
}

/// The component's warnings in the log of the server. A call that is over ends its queries with errors, which
/// are no news.
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

/// What a model can do about a name that is not there.
std::string advice(const service::UnknownName& error, const Indexing& indexing) {
  using What = service::UnknownName::What;
  if (error.what_kind() == What::place) return error.message();
  std::string text = error.message() + ". ";
  if (!error.near().empty()) {
    text += "Near names: " + service::listed(error.near()) + ".";
  } else if (error.what_kind() == What::symbol) {
    text += "Take `fqn` from a pack; action \"task\" finds symbols.";
  } else {
    text += "Action \"status\" lists the largest components.";
  }
  if (indexing.in_progress) {
    text += " Files are still being indexed (" + std::to_string(indexing.progress) + " %): try again later.";
  }
  return text;
}

std::string names_of(const Sources& sources) {
  std::vector<std::string> names;
  for (const auto& source : sources) names.push_back(source->name());
  return service::listed(names);
}

Json define(const Sources& sources, bool structured) {
  Json tool = {{"name", "context"}, {"title", "Code context"}, {"description", description()}};
  tool["inputSchema"] = api::input_schema();
  auto& repository = tool["inputSchema"]["properties"]["repository"]["description"];
  repository = repository.get<std::string>() + " Served: " + names_of(sources) + ".";
  if (structured) tool["outputSchema"] = output::report_schema();
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

Json text_result(const std::string& text, bool is_error) {
  return {{"content", Json::array({{{"type", "text"}, {"text", text}}})}, {"isError", is_error}};
}

}  // namespace

ContextTool::ContextTool(const Sources& sources, bool structured)
    : sources_(sources), structured_(structured), definition_(define(sources, structured)) {}

Json ContextTool::call(const Input& arguments, const Call& call) const {
  try {
    call.check();
    Json data = run(api::read_request(arguments), call);
    call.check();
    Json result = text_result(to_line(data), false);
    if (structured_) result["structuredContent"] = std::move(data);
    return result;
  } catch (const api::BadArguments& error) {
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

Json ContextTool::run(const api::Request& request, const Call& call) const {
  if (!request.of_each) return answer(source(request), request, call);
  const Call quiet(call.stop_token(), call.deadline());  // the progress of each would not rise
  Json all = Json::array();
  if (request.repository) {
    all.push_back(answer(source(request), request, quiet));
  } else {
    for (const auto& source : sources_) all.push_back(answer(*source, request, quiet));
  }
  return {{"repositories", std::move(all)}};
}

Json ContextTool::answer(Source& source, const api::Request& request, const Call& call) {
  using index::IndexError;
  constexpr double STEPS = 3;
  Indexing indexing;
  try {
    call.report(0, STEPS, "Looking for changed files");
    indexing = source.refresh(call);
    const std::unique_ptr<View> view = source.view(call);
    call.report(1, STEPS, "Reading the index");
    LogSink log(call);
    Json data = request.answer({*view, source.name(), source.root(), indexing, &log});
    call.report(STEPS, STEPS, "Done");
    return data;
  } catch (const service::UnknownName& error) {
    throw api::BadArguments(advice(error, indexing));
  } catch (const IndexError& error) {
    if (error.kind() != IndexError::Kind::damaged) throw;
    source.renew();
    throw IndexError(error.kind(), std::string(error.what()) + ". It is being rebuilt: ask again soon.");
  }
}

Source& ContextTool::source(const api::Request& request) const {
  if (!request.repository && sources_.size() == 1) return *sources_.front();
  if (!request.repository) {
    throw api::BadArguments("Several repositories are served: name one as \"repository\": " +
                            names_of(sources_));
  }
  const auto found = std::find_if(sources_.begin(), sources_.end(), [&](const auto& source) {
    return source->name() == *request.repository || leads_to(*request.repository, source->root());
  });
  if (found == sources_.end()) {
    throw api::BadArguments("Unknown repository: " + *request.repository + ". Served: " + names_of(sources_));
  }
  return **found;
}

}  // namespace tarnwick::mcp
