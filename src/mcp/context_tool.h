// The tool: binds calls to actions, and whatever those throw to results.
#pragma once

#include "api/actions.h"
#include "mcp/server.h"
#include "mcp/source.h"

namespace tarnwick::mcp {

/// `context`, over some repositories.
class ContextTool final : public Tool {
 public:
  /// `sources` has one at least and must outlive the tool. With `structured`, results carry their data as
  /// structured content too, and the tool a schema of it.
  ContextTool(const Sources& sources, bool structured);

  const Json& definition() const override { return definition_; }
  Json call(const Input& arguments, const Call& call) const override;

 private:
  Json run(const api::Request& request, const Call& call) const;
  static Json answer(Source& source, const api::Request& request, const Call& call);
  /// The one that is asked. Throws BadArguments, listing the served repositories.
  Source& source(const api::Request& request) const;

  const Sources& sources_;
  bool structured_;
  Json definition_;
};

/// What a client may tell its model about the server.
inline constexpr std::string_view INSTRUCTIONS =
    "Call the tool `context` with action \"task\" before you search or read files for a coding task: it "
    "names the code that matters, and the tests that cover it.";

}  // namespace tarnwick::mcp
