// What clients can ask: one JSON object in, one out.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "api/json_fields.h"
#include "service/view.h"

namespace tarnwick::api {

/// Answers a request that was read. Throws service::UnknownName, and errors of the index.
using Answer = std::function<Json(const service::Session&)>;

/// A request whose arguments are good.
struct Request {
  std::optional<std::string> repository;  ///< the one to ask, by its name or path; absent: not said
  bool of_each = false;                   ///< without a repository, each is asked
  Answer answer;
};

struct Action {
  std::string_view name;
  std::string_view sentence;  ///< what it does, for models
  bool of_each;               ///< as Request::of_each
  /// The fields of its request, as properties of a schema.
  Json (*properties)();
  /// Reads the fields of its request, and `common`. Throws BadArguments.
  Answer (*read)(const Input& arguments, const std::vector<service::Field>& common);
};

std::span<const Action> actions();

/// Reads the arguments of a call: "action", what that takes, and "repository". Throws BadArguments.
Request read_request(const Input& arguments);

/// The schema of the arguments: all actions in one object.
Json input_schema();

}  // namespace tarnwick::api
