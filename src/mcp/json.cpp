#include "mcp/json.h"

#include <charconv>
#include <cstddef>
#include <stdexcept>

namespace tarnwick::mcp {
namespace {

constexpr std::size_t ESCAPE_LENGTH = 6;  // \uXXXX

/// The code unit of the escape at the head of `text`; -1 when there is none.
int escaped_unit(std::string_view text) {
  if (text.size() < ESCAPE_LENGTH || text[0] != '\\' || text[1] != 'u') return -1;
  unsigned value = 0;
  const char* const end = text.data() + ESCAPE_LENGTH;
  const auto [parsed, error] = std::from_chars(text.data() + 2, end, value, 16);
  return error == std::errc() && parsed == end ? static_cast<int>(value) : -1;
}

bool is_high(int unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool is_low(int unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

/// `line` with the escape of U+FFFD for each escape of half a character.
std::string whole_characters(std::string_view line) {
  std::string result;
  result.reserve(line.size());
  while (!line.empty()) {
    const int unit = escaped_unit(line);
    std::size_t taken = line[0] == '\\' && line.size() > 1 ? 2 : 1;  // an escaped backslash opens no escape
    if (unit >= 0) taken = ESCAPE_LENGTH;
    if (is_high(unit) && is_low(escaped_unit(line.substr(ESCAPE_LENGTH)))) taken = 2 * ESCAPE_LENGTH;
    const bool half = taken == ESCAPE_LENGTH && (is_high(unit) || is_low(unit));
    result += half ? std::string_view("\\ufffd") : line.substr(0, taken);
    line.remove_prefix(taken);
  }
  return result;
}

Input parse_strictly(std::string_view line, int most_depth) {
  const auto limit = [most_depth](int depth, Input::parse_event_t /*event*/, const Input& /*value*/) {
    if (depth > most_depth) throw std::invalid_argument("the message is nested too deeply");
    return true;
  };
  return Input::parse(line.begin(), line.end(), limit);
}

Input parse_repaired(std::string_view line, int most_depth) {
  try {
    return parse_strictly(line, most_depth);
  } catch (const Input::parse_error&) {
    return parse_strictly(whole_characters(line), most_depth);
  }
}

}  // namespace

std::string to_line(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

const Input* find(const Input& json, std::string_view key) {
  if (!json.is_object()) return nullptr;
  const auto found = json.find(key);
  return found == json.end() ? nullptr : &*found;
}

Input parse_line(std::string_view line, int most_depth) {
  const auto refuse = [](std::size_t byte) {
    throw std::invalid_argument("the message is not JSON (byte " + std::to_string(byte) + ")");
  };
  // The parser takes a NUL for the end and passes over what follows.
  if (const std::size_t nul = line.find('\0'); nul != std::string_view::npos) refuse(nul + 1);
  try {
    return parse_repaired(line, most_depth);
  } catch (const Input::parse_error& error) {
    refuse(error.byte);
    return {};
  } catch (const Input::out_of_range&) {
    throw std::invalid_argument("the message holds a number out of range");
  }
}

}  // namespace tarnwick::mcp
