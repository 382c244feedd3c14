#include "output/json.h"

#include <nlohmann/json.hpp>
#include <variant>

#include "output/formats.h"
#include "resolution/reference_list.h"
#include "text/surrogates.h"

namespace tarnwick::output {
namespace {

using Json = nlohmann::ordered_json;

Json json_of(bool value) {
  return value;
}
Json json_of(std::int64_t value) {
  return value;
}
Json json_of(const std::string& text) {
  return text::replace_surrogates(text);
}
Json json_of(const Text& text) {
  return text::replace_surrogates(text);
}
Json json_of(const OptionalText& text) {
  return text ? json_of(*text) : Json(nullptr);
}
Json json_of(const TestRow& row) {
  return {{"file", json_of(row.file)}, {"for", json_of(row.source)}};
}
Json json_of(const RelatedSymbol& symbol) {
  return {{"fqn", json_of(symbol.fqn)}, {"kind", json_of(symbol.kind)}};
}

Json json_of(const Parameter& parameter) {
  Json json = {{"name", json_of(parameter.name)}, {"description", json_of(parameter.description)}};
  if (parameter.type) json["type"] = json_of(*parameter.type);
  return json;
}

Json json_of(const Entry& entry);

Json json_of(const Reference& reference) {
  Json json = {{"usage_type", json_of(reference.usage_type())}};
  if (const std::optional<CallerSymbol> caller = reference.caller_symbol()) {
    if (has_text(caller->fqn)) json["caller"] = json_of(caller->fqn);
    if (has_text(caller->kind)) json["caller_kind"] = json_of(caller->kind);
  }
  const auto* const placed = dynamic_cast<const resolution::PlacedReference*>(&reference);
  if (const OptionalText path = placed == nullptr ? std::nullopt : placed->path()) {
    json["file"] = json_of(path);
    json["line"] = placed->line();
  }
  if (const OptionalText context = reference.context()) json["context"] = json_of(context);
  return json;
}
Json json_of(const ReferencePtr& reference) {
  return json_of(*reference);
}

Json json_of(const service::Namesake& other) {
  return {{"kind", json_of(other.kind)}, {"file", other.path}, {"line", other.line}};
}

Json json_of(const index::LanguageStatus& language) {
  return {{"language", language.language},
          {"files", language.files},
          {"symbols", language.symbols},
          {"references", language.references},
          {"files_with_syntax_errors", language.with_errors}};
}
Json json_of(const index::SkipStatus& skipped) {
  return {{"reason", skipped.reason}, {"files", skipped.files}};
}
Json json_of(const index::ComponentStatus& component) {
  return {{"name", json_of(component.name)}, {"path", json_of(component.path)}, {"files", component.files}};
}

template <class Item>
Json json_of(const std::vector<Item>& items) {
  Json json = Json::array();
  for (const Item& item : items) json.push_back(json_of(item));
  return json;
}

template <class Item>
Json json_of(std::vector<Item>* items) {
  return json_of(*items);
}

Json json_of(const Entry& entry) {
  Json json = Json::object();
  entry.visit([&](std::string_view key, const auto& value) { json[std::string(key)] = json_of(value); });
  return json;
}

void add_contents(const service::StatusReport& report, Json& json) {
  const index::IndexStatus& index = *report.index;
  if (index.indexed_at) json["indexed_at"] = *index.indexed_at;
  if (index.git_head) json["git_head"] = *index.git_head;
  json["languages"] = json_of(index.languages);
  json["left_out"] = json_of(index.skipped);
  json["components"] = json_of(report.components);
  json["components_total"] = index.components.size();
}

void add_indexing(const service::Indexing& indexing, Json& json) {
  json["indexing_in_progress"] = indexing.in_progress;
  json["progress"] = indexing.progress;
}

}  // namespace

Json to_json(ContextPack& pack) {
  Json json = Json::object();
  for (const auto& [key, value] : pack.to_dict()) {
    json[std::string(key)] = std::visit([](const auto& held) { return json_of(held); }, value);
  }
  return json;
}

Json to_json(service::TaskReport report) {
  for (const auto& [field, text] : report.remarks)
    report.pack.notes.emplace_back(field.empty() ? text : std::string(field) + ": " + text);
  return to_json(report.pack);
}

Json to_json(const service::SymbolReport& report) {
  const Entry& entry = report.pack.symbols.at(0);
  Json json = json_of(entry);
  json["end_line"] = entry.symbol->end_line();
  json["body"] = report.body;
  json["body_truncated"] = report.body_cut;
  json["references"] = json_of(report.references.references);
  json["references_total"] = report.references.total;
  json["tests"] = Json::array();
  for (const TestRow& row : report.pack.tests) json["tests"].push_back(json_of(row.file));
  if (!report.others.empty()) json["others"] = json_of(report.others);
  if (!report.pack.notes.empty()) json["notes"] = json_of(report.pack.notes);
  add_indexing(report.indexing, json);
  return json;
}

Json to_json(const service::StatusReport& report) {
  Json json = {{"repository", report.repository}, {"root", json_of(text::from_os(report.root.native()))}};
  add_indexing(report.indexing, json);
  if (report.indexing.failure) json["failure"] = *report.indexing.failure;
  if (report.index) add_contents(report, json);
  return json;
}

void print_json(const Report& report, std::ostream& out, bool /*colour*/) {
  out << std::visit([](auto* held) { return to_json(*held); }, report).dump() << '\n';
}

}  // namespace tarnwick::output
