// The fields of a request as members of a JSON object.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "service/field.h"

namespace tarnwick::api {

/// What a client sent. Keys are looked up in logarithmic time, however many a hostile message holds.
using Input = nlohmann::json;

/// What is sent: keys stay in the order in which they are written.
using Json = nlohmann::ordered_json;

/// Arguments, or what they name, are not what the action needs; the text lets a model correct itself. It may
/// quote a NUL, where `what()` ends.
class BadArguments : public std::invalid_argument {
 public:
  explicit BadArguments(const std::string& message) : std::invalid_argument(message), message_(message) {}

  const std::string& message() const noexcept { return message_; }

 private:
  std::string message_;
};

/// The schema of each field by its name, as the `properties` of an object; defaults are the values that the
/// fields hold.
Json properties_of(const std::vector<service::Field>& fields);

/// The names of the fields that an object must have.
Json required_of(const std::vector<service::Field>& fields);

/// Reads `object`, a JSON object, into the fields; those that it lacks keep their values. Throws BadArguments
/// for a member that is no field, is of a wrong type, or passes a limit, and for a required one that is
/// missing. 20.0 is an integer, as JSON Schema has it.
void read_fields(const Input& object, const std::vector<service::Field>& fields);

/// Reads one of them alone, whatever else `object` holds.
void read_field(const Input& object, const service::Field& field);

}  // namespace tarnwick::api
