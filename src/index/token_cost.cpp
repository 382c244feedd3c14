#include "index/token_cost.h"

#include <optional>

#include "tarnwick/workers/context_builder.h"
#include "text/lowercase.h"

namespace tarnwick::index {
namespace {

constexpr std::int64_t CHARS_PER_TOKEN = 4;

/// `{"fqn":"","name":"","kind":"","file":"","line":,"signature":"","docstring":"","docstring_truncated":false},`
constexpr std::int64_t FRAME_CHARS = 107;

/// `"parameters":[],` and, for each, `{"name":"","description":""},` with `"type":"",` where there is one.
constexpr std::int64_t PARAMETERS_CHARS = 16;
constexpr std::int64_t PARAMETER_CHARS = 29;
constexpr std::int64_t TYPE_CHARS = 10;

/// An entry's even share of what the packer adds without weighing it, measured over packs of real
/// repositories at a budget of 2,000: the files, related symbols, usage examples, recommendations and the
/// frame of the pack.
constexpr std::int64_t SHARE_CHARS = 115;

/// The characters of a text inside a JSON string.
std::int64_t json_length(std::string_view text) {
  std::int64_t length = text::length(text);
  for (const char c : text) {
    if (c == '"' || c == '\\' || c == '\n' || c == '\t') {
      ++length;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      length += 5;
    }
  }
  return length;
}

std::int64_t parameters_length(std::string_view docstring) {
  const std::vector<Parameter> parameters = ContextBuilder::_extract_parameters(docstring);
  if (parameters.empty()) return 0;
  std::int64_t length = PARAMETERS_CHARS;
  for (const Parameter& parameter : parameters) {
    length += PARAMETER_CHARS + json_length(parameter.name) + json_length(parameter.description);
    if (parameter.type) length += TYPE_CHARS + json_length(*parameter.type);
  }
  return length;
}

}  // namespace

std::int64_t token_cost(const SymbolRow& symbol, std::string_view path) {
  std::int64_t chars = FRAME_CHARS + SHARE_CHARS + json_length(symbol.fqn) + json_length(symbol.name) +
                       json_length(symbol.kind) + json_length(path) +
                       static_cast<std::int64_t>(std::to_string(symbol.start_line).size());
  if (symbol.signature) chars += json_length(*symbol.signature);
  if (symbol.docstring) {
    chars += json_length(*symbol.docstring) - text::length(*symbol.docstring);
    chars += parameters_length(*symbol.docstring);
  }
  return chars / CHARS_PER_TOKEN;
}

}  // namespace tarnwick::index
