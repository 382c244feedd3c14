#include "mcp/schema.h"

#include <rapidjson/document.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>

#include <cmath>
#include <string_view>
#include <utility>

namespace tarnwick::mcp {
namespace {

using Validator = rapidjson::SchemaValidator;

rapidjson::Document parsed(const Json& schema) {
  rapidjson::Document document;
  document.Parse(schema.dump().c_str());
  return document;
}

rapidjson::SizeType size_of(const auto& container) {
  return static_cast<rapidjson::SizeType>(container.size());
}

bool feed(const Input& value, Validator& validator);

bool feed_object(const Input& object, Validator& validator) {
  if (!validator.StartObject()) return false;
  for (const auto& [key, value] : object.items()) {
    if (!validator.Key(key.data(), size_of(key), true) || !feed(value, validator)) return false;
  }
  return validator.EndObject(size_of(object));
}

bool feed_array(const Input& array, Validator& validator) {
  if (!validator.StartArray()) return false;
  for (const Input& value : array) {
    if (!feed(value, validator)) return false;
  }
  return validator.EndArray(size_of(array));
}

/// 20.0 is an integer to JSON Schema.
bool feed_float(double number, Validator& validator) {
  constexpr double EXACT = 9007199254740992.0;  // 2^53
  if (std::trunc(number) == number && std::fabs(number) <= EXACT) {
    return validator.Int64(static_cast<std::int64_t>(number));
  }
  return validator.Double(number);
}

/// Walks `value` past the validator; false at the first fault.
bool feed(const Input& value, Validator& validator) {
  switch (value.type()) {
    case Input::value_t::object:
      return feed_object(value, validator);
    case Input::value_t::array:
      return feed_array(value, validator);
    case Input::value_t::string: {
      const auto& text = value.get_ref<const std::string&>();
      return validator.String(text.data(), size_of(text), true);
    }
    case Input::value_t::boolean:
      return validator.Bool(value.get<bool>());
    case Input::value_t::number_integer:
      return validator.Int64(value.get<std::int64_t>());
    case Input::value_t::number_unsigned:
      return validator.Uint64(value.get<std::uint64_t>());
    case Input::value_t::number_float:
      return feed_float(value.get<double>(), validator);
    default:
      return validator.Null();
  }
}

std::string text_of(const rapidjson::Pointer& pointer) {
  rapidjson::StringBuffer buffer;
  pointer.Stringify(buffer);
  return {buffer.GetString(), buffer.GetSize()};
}

/// `"name"`, or `"names"[2]` for an item.
std::string name_of(const rapidjson::Pointer& place) {
  std::string name;
  for (std::size_t i = 0; i < place.GetTokenCount(); ++i) {
    const rapidjson::Pointer::Token& token = place.GetTokens()[i];
    const std::string text(token.name, token.length);
    const bool item = token.index != rapidjson::kPointerInvalidIndex;
    name += item
                ? "[" + text + "]"
                : (name.empty() ? "" : ".") + Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
  }
  return name.empty() ? "the value" : name;
}

std::string listed(const Json& values) {
  std::string list;
  for (const Json& value : values) list += (list.empty() ? "" : ", ") + value.dump();
  return list;
}

std::string missing_of(const Json& required, const Input& value) {
  for (const Json& name : required) {
    if (!value.contains(name.get<std::string>())) return name.dump() + " is missing";
  }
  return "an argument is missing";
}

std::string known_of(const Json& properties) {
  Json names = Json::array();
  for (const auto& [name, property] : properties.items()) names.push_back(name);
  return listed(names);
}

/// What `keyword` of the schema `node` asks of the part of `value` called `name`.
std::string demand(std::string_view keyword, const std::string& name, const Json& node, const Input& value) {
  const Json& wanted = node[std::string(keyword)];
  if (keyword == "required") return missing_of(wanted, value);
  if (keyword == "additionalProperties") {
    return name + " is not known here; known are " + known_of(node["properties"]);
  }
  if (keyword == "type") return name + " must be of type " + wanted.get<std::string>();
  if (keyword == "enum") return name + " must be one of " + listed(wanted);
  if (keyword == "minimum") return name + " must be at least " + wanted.dump();
  if (keyword == "maximum") return name + " must be at most " + wanted.dump();
  if (keyword == "minLength") return name + " must have at least " + wanted.dump() + " characters";
  if (keyword == "maxLength") return name + " must have at most " + wanted.dump() + " characters";
  if (keyword == "maxItems") return name + " must have at most " + wanted.dump() + " items";
  return name + " must fit " + Json{{keyword, wanted}}.dump();
}

}  // namespace

struct Schema::Compiled {
  explicit Compiled(const rapidjson::Document& document) : schema(document) {}
  rapidjson::SchemaDocument schema;
};

Schema::Schema(Json schema)
    : schema_(std::move(schema)), compiled_(std::make_unique<Compiled>(parsed(schema_))) {}

Schema::~Schema() = default;

std::optional<std::string> Schema::fault(const Input& value) const {
  Validator validator(compiled_->schema);
  if (feed(value, validator)) return std::nullopt;
  const Json::json_pointer node(text_of(validator.GetInvalidSchemaPointer()));
  return demand(validator.GetInvalidSchemaKeyword(), name_of(validator.GetInvalidDocumentPointer()),
                schema_.at(node), value);
}

}  // namespace tarnwick::mcp
