#include "api/json_fields.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

#include "text/lowercase.h"

namespace tarnwick::api {
namespace {

using service::Field;

/// What is read into: an optional's value, which is there from then on.
template <class Value>
Value& target(Value& value) {
  return value;
}
template <class Value>
Value& target(std::optional<Value>& value) {
  return value.emplace();
}

std::string in_quotes(std::string_view text) {
  return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

template <class Names>
std::string listed(const Names& names) {
  std::string list;
  for (const std::string_view name : names) list += (list.empty() ? "" : ", ") + in_quotes(name);
  return list;
}

// --- Schema

Json type_of(const Field& field, const std::string& /*text*/) {
  if (!field.choices.empty()) return {{"type", "string"}, {"enum", field.choices}};
  return {{"type", "string"}, {"maxLength", field.max}};
}
Json type_of(const Field& field, std::int64_t /*number*/) {
  return {{"type", "integer"}, {"minimum", field.min}, {"maximum", field.max}};
}
Json type_of(const Field& /*field*/, bool /*flag*/) {
  return {{"type", "boolean"}};
}

/// An item of a list as a field of its own.
Field item_of(const Field& list) {
  Field item = list;
  item.max = service::MAX_NAME_CHARACTERS;
  return item;
}

Json type_of(const Field& field, const std::vector<std::string>& /*names*/) {
  return {{"type", "array"}, {"items", type_of(item_of(field), std::string())}, {"maxItems", field.max}};
}

template <class Value>
Json schema_of(const Field& field, const Value& by_default) {
  Json schema = type_of(field, by_default);
  if constexpr (std::is_arithmetic_v<Value>) schema["default"] = by_default;
  return schema;
}
template <class Value>
Json schema_of(const Field& field, const std::optional<Value>& /*absent*/) {
  return type_of(field, Value());
}

// --- Reading. `name` is in quotes as the client wrote it.

[[noreturn]] void refuse_type(const std::string& name, std::string_view type) {
  throw BadArguments(name + " must be of type " + std::string(type));
}

void check_max(const std::string& name, std::int64_t count, std::int64_t max, std::string_view unit) {
  if (count > max)
    throw BadArguments(name + " must have at most " + std::to_string(max) + " " + std::string(unit));
}

void read(const Input& json, const Field& field, const std::string& name, std::string& text) {
  if (!json.is_string()) refuse_type(name, "string");
  text = json.get<std::string>();
  const auto& choices = field.choices;
  if (!choices.empty() && std::find(choices.begin(), choices.end(), text) == choices.end())
    throw BadArguments(name + " must be one of " + listed(choices));
  check_max(name, text::length(text), field.max, "characters");
}

/// The nearest integer that fits, for one that no limit lets through.
std::optional<std::int64_t> integer_of(const Input& json) {
  constexpr double EXACT = 9007199254740992.0;  // 2^53
  constexpr std::int64_t MAX = std::numeric_limits<std::int64_t>::max();
  if (json.is_number_unsigned())
    return static_cast<std::int64_t>(std::min<std::uint64_t>(json.get<std::uint64_t>(), MAX));
  if (json.is_number_integer()) return json.get<std::int64_t>();
  const double number = json.is_number() ? json.get<double>() : 0.5;
  if (std::trunc(number) != number || std::fabs(number) > EXACT) return std::nullopt;
  return static_cast<std::int64_t>(number);
}

void read(const Input& json, const Field& field, const std::string& name, std::int64_t& number) {
  const std::optional<std::int64_t> integer = integer_of(json);
  if (!integer) refuse_type(name, "integer");
  if (*integer < field.min) throw BadArguments(name + " must be at least " + std::to_string(field.min));
  if (*integer > field.max) throw BadArguments(name + " must be at most " + std::to_string(field.max));
  number = *integer;
}

void read(const Input& json, const Field& /*field*/, const std::string& name, bool& flag) {
  if (!json.is_boolean()) refuse_type(name, "boolean");
  flag = json.get<bool>();
}

void read(const Input& json, const Field& field, const std::string& name, std::vector<std::string>& names) {
  if (!json.is_array()) refuse_type(name, "array");
  check_max(name, static_cast<std::int64_t>(json.size()), field.max, "items");
  const Field item = item_of(field);
  for (std::size_t i = 0; i < json.size(); ++i)
    read(json[i], item, name + "[" + std::to_string(i) + "]", names.emplace_back());
}

void read_value(const Input& json, const Field& field, std::string_view name) {
  std::visit([&](auto* value) { read(json, field, in_quotes(name), target(*value)); }, field.value);
}

bool is_required(const Field& field) {
  return std::holds_alternative<std::string*>(field.value);
}

bool is_named(const Field& field, std::string_view name) {
  return name == field.name || (!field.former.name.empty() && name == field.former.name);
}

void refuse_unknown(const Input& object, const std::vector<Field>& fields) {
  for (const auto& [name, value] : object.items()) {
    const auto has_name = [&name = name](const Field& field) { return is_named(field, name); };
    if (std::any_of(fields.begin(), fields.end(), has_name)) continue;
    std::vector<std::string_view> known;
    for (const Field& field : fields) known.push_back(field.name);
    throw BadArguments(in_quotes(name) + " is not known here; known are " + listed(known));
  }
}

}  // namespace

Json properties_of(const std::vector<Field>& fields) {
  Json properties = Json::object();
  for (const Field& field : fields) {
    Json& schema = properties[std::string(field.name)];
    schema = std::visit([&](const auto* value) { return schema_of(field, *value); }, field.value);
    schema["description"] = std::string(field.sentence) + ".";
  }
  return properties;
}

Json required_of(const std::vector<Field>& fields) {
  Json names = Json::array();
  for (const Field& field : fields) {
    if (is_required(field)) names.push_back(field.name);
  }
  return names;
}

void read_field(const Input& object, const Field& field) {
  const auto found = object.find(field.name);
  const auto former = field.former.name.empty() ? object.end() : object.find(field.former.name);
  if (found != object.end() && former != object.end())
    throw BadArguments(in_quotes(field.former.name) + " is the same as " + in_quotes(field.name) +
                       "; give one of them");
  if (found != object.end()) read_value(*found, field, field.name);
  if (former != object.end()) {
    read_value(*former, field, field.former.name);
    if (field.former.negated) *std::get<bool*>(field.value) ^= true;
  }
  if (found == object.end() && is_required(field)) throw BadArguments(in_quotes(field.name) + " is missing");
}

void read_fields(const Input& object, const std::vector<Field>& fields) {
  refuse_unknown(object, fields);
  for (const Field& field : fields) read_field(object, field);
}

}  // namespace tarnwick::api
