#include "output/json.h"

#include <nlohmann/json.hpp>

#include "output/formats.h"
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

template <class Item>
Json json_of(const std::vector<Item>& items) {
  Json json = Json::array();
  for (const Item& item : items) json.push_back(json_of(item));
  return json;
}

/// An object of the keys that `record` has, in their order.
template <class Record>
Json object_of(const Record& record) {
  Json json = Json::object();
  record.visit([&](std::string_view key, const auto& value) { json[std::string(key)] = json_of(value); });
  return json;
}

Json json_of(const Entry& entry) {
  return object_of(entry);
}

}  // namespace

Json to_json(const ContextPack& pack) {
  return object_of(pack);
}

Json to_json(const Entry& entry) {
  return json_of(entry);
}

Json to_json(const OptionalText& text) {
  return json_of(text);
}

void print_json(const ContextPack& pack, std::ostream& out) {
  out << to_json(pack).dump() << '\n';
}

}  // namespace tarnwick::output
