#include "sandbox/facts_codec.h"

#include <algorithm>
#include <utility>

#include "sandbox/byte_stream.h"
#include "text/utf8.h"

namespace tarnwick::sandbox {
namespace {

using facts::Definition;
using facts::FileFacts;
using facts::Import;
using facts::Use;

/// What a text may hold of one kind, for each of its bytes: a name may be used in more than one way.
constexpr std::size_t MAX_PER_BYTE = 4;

/// A position that may be absent: 0, or one more than it.
std::uint64_t number_of(const std::optional<std::size_t>& position) {
  return position ? *position + 1 : 0;
}

/// The size of a text's first character; 0 where it is no UTF-8. Lone surrogates count as characters: they
/// come from paths, by way of qualified names.
std::size_t character_size(std::string_view text) {
  const text::Sequence sequence = text::first_sequence(text);
  if (sequence.valid) return sequence.size;
  const bool is_surrogate = text.size() >= 3 && text[0] == '\xED' && text::is_continuation(text[1]) &&
                            text::is_continuation(text[2]);
  return is_surrogate ? 3 : 0;
}

void write(ByteWriter& out, const Definition& definition) {
  for (const std::string* text :
       {&definition.name, &definition.fqn, &definition.kind, &definition.signature, &definition.docstring})
    out.text(*text);
  out.number(definition.is_export ? 1 : 0);
  out.number(static_cast<std::uint64_t>(definition.start_line));
  out.number(static_cast<std::uint64_t>(definition.end_line));
  out.number(definition.start_byte);
  out.number(definition.end_byte);
  out.number(number_of(definition.parent));
}

void write(ByteWriter& out, const Use& use) {
  for (const std::string* text : {&use.name, &use.qualifier, &use.usage_type}) out.text(*text);
  out.number(static_cast<std::uint64_t>(use.line));
  out.number(number_of(use.enclosing));
}

void write(ByteWriter& out, const Import& import) {
  for (const std::string* text : {&import.module, &import.name, &import.alias}) out.text(*text);
  out.number(static_cast<std::uint64_t>(import.line));
}

template <class Item>
void write_all(ByteWriter& out, const std::vector<Item>& items) {
  out.number(items.size());
  for (const Item& item : items) write(out, item);
}

class FactsReader {
 public:
  FactsReader(std::string_view bytes, std::string_view text)
      : in_(bytes),
        text_size_(text.size()),
        lines_(static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n')) + 1) {}

  FileFacts read() {
    FileFacts facts;
    facts.has_error = in_.number(1) != 0;
    facts.is_fallback = in_.number(1) != 0;
    facts.failure = static_cast<facts::ParseFailure>(in_.number(facts::LAST_PARSE_FAILURE));
    for (std::uint64_t left = count(); left > 0; --left) facts.definitions.push_back(definition(facts));
    for (std::uint64_t left = count(); left > 0; --left) facts.uses.push_back(use(facts));
    for (std::uint64_t left = count(); left > 0; --left)
      facts.imports.push_back({string(), string(), string(), line(1)});
    in_.end();
    return facts;
  }

 private:
  std::uint64_t count() { return in_.number(MAX_PER_BYTE * (text_size_ + 1)); }

  std::string string() {
    const std::string_view value = in_.text();
    for (std::size_t at = text::ascii_prefix(value); at < value.size();) {
      const std::size_t size = character_size(value.substr(at));
      if (size == 0) throw MalformedMessage("a text is no UTF-8");
      at += size;
    }
    return std::string(value);
  }

  std::uint64_t number_from(std::uint64_t minimum, std::uint64_t maximum) {
    const std::uint64_t value = in_.number(maximum);
    if (value < minimum) throw MalformedMessage("a number is too small");
    return value;
  }

  std::int64_t line(std::int64_t minimum) {
    return static_cast<std::int64_t>(number_from(static_cast<std::uint64_t>(minimum), lines_));
  }

  std::optional<std::size_t> position(std::size_t size) {
    const std::uint64_t number = in_.number(size);
    return number == 0 ? std::nullopt : std::optional(static_cast<std::size_t>(number - 1));
  }

  Definition definition(const FileFacts& facts) {
    Definition result;
    result.name = string();
    result.fqn = string();
    if (!result.fqn.ends_with(result.name)) throw MalformedMessage("a qualified name lacks its name");
    result.kind = string();
    result.signature = string();
    result.docstring = string();
    result.is_export = in_.number(1) != 0;
    result.start_line = line(1);
    result.end_line = line(result.start_line);
    const std::size_t before = facts.definitions.empty() ? 0 : facts.definitions.back().start_byte;
    result.start_byte = static_cast<std::size_t>(number_from(before, text_size_));
    result.end_byte = static_cast<std::size_t>(number_from(result.start_byte, text_size_));
    result.parent = position(facts.definitions.size());
    return result;
  }

  Use use(const FileFacts& facts) {
    Use result{string(), string(), string(), line(1), std::nullopt};
    result.enclosing = position(facts.definitions.size());
    return result;
  }

  ByteReader in_;
  std::size_t text_size_;
  std::uint64_t lines_;
};

}  // namespace

std::string pack_facts(const FileFacts& facts) {
  ByteWriter out;
  out.number(facts.has_error ? 1 : 0);
  out.number(facts.is_fallback ? 1 : 0);
  out.number(static_cast<std::uint64_t>(facts.failure));
  write_all(out, facts.definitions);
  write_all(out, facts.uses);
  write_all(out, facts.imports);
  return out.bytes();
}

FileFacts unpack_facts(std::string_view bytes, std::string_view text) {
  return FactsReader(bytes, text).read();
}

}  // namespace tarnwick::sandbox
