#include "sandbox/facts_codec.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

#include "extraction/dump.h"
#include "sandbox/byte_stream.h"

namespace tarnwick::sandbox {
namespace {

constexpr std::string_view TEXT = "class A {\n  m() { n(); }\n}\n";

facts::FileFacts facts_of_text() {
  facts::FileFacts facts;
  facts.definitions = {{.name = "A",
                        .fqn = "p\xED\xB2\x80.A",  // a byte of a path that is no UTF-8
                        .kind = "class",
                        .is_export = true,
                        .end_line = 3,
                        .end_byte = TEXT.size(),
                        .signature = "class A",
                        .docstring = "Ä thing.\nMore."},
                       {.name = "m",
                        .fqn = "A.m",
                        .kind = "method",
                        .start_line = 2,
                        .end_line = 2,
                        .start_byte = 12,
                        .end_byte = 24,
                        .signature = "m()",
                        .parent = 0}};
  facts.uses = {{"n", "", "call", 2, 1}, {"A", "q", "type", 3, std::nullopt}};
  facts.imports = {{"./util", "n", "k", 1}};
  facts.has_error = true;
  return facts;
}

std::string repacked(std::string_view bytes) {
  return pack_facts(unpack_facts(bytes, TEXT));
}

TEST(FactsCodec, GivesBackWhatItTook) {
  const auto facts = unpack_facts(pack_facts(facts_of_text()), TEXT);
  EXPECT_EQ(extraction::dump(facts), extraction::dump(facts_of_text()));
  EXPECT_EQ(facts.definitions[1].parent, 0U);
  EXPECT_EQ(pack_facts(facts), pack_facts(facts_of_text()));
}

TEST(FactsCodec, RefusesWhatEndsTooEarlyOrTooLate) {
  const std::string bytes = pack_facts(facts_of_text());
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_THROW(unpack_facts(bytes.substr(0, size), TEXT), MalformedMessage) << size;
  EXPECT_THROW(unpack_facts(bytes + '\0', TEXT), MalformedMessage);
}

TEST(FactsCodec, WhateverItAcceptsIsSound) {
  std::mt19937 random(1);
  const std::string whole = pack_facts(facts_of_text());
  int accepted = 0;
  for (int i = 0; i < 20'000; ++i) {
    std::string bytes = whole;
    for (int change = 0; change < 1 + i % 3; ++change) bytes[random() % bytes.size()] = static_cast<char>(random());
    try {
      EXPECT_EQ(repacked(bytes).size(), bytes.size()) << "the same facts have the same bytes";
      ++accepted;
    } catch (const MalformedMessage&) {
    }
  }
  EXPECT_GT(accepted, 0);
}

struct Lie {
  std::string_view name;
  void (*tell)(facts::FileFacts& facts);
};

TEST(FactsCodec, RefusesFactsThatNoTextHas) {
  constexpr auto FAR = std::size_t{1} << 40U;
  for (const auto& [name, tell] : std::initializer_list<Lie>{
           {"end behind the text", [](auto& facts) { facts.definitions[0].end_byte = TEXT.size() + 1; }},
           {"end before the start", [](auto& facts) { facts.definitions[1].end_byte = 3; }},
           {"start far away", [](auto& facts) { facts.definitions[1].start_byte = FAR; }},
           {"out of order", [](auto& facts) { std::swap(facts.definitions[0], facts.definitions[1]); }},
           {"line 0", [](auto& facts) { facts.uses[0].line = 0; }},
           {"negative line", [](auto& facts) { facts.imports[0].line = -1; }},
           {"line behind the text", [](auto& facts) { facts.definitions[0].end_line = 5; }},
           {"ends a line before it starts", [](auto& facts) { facts.definitions[1].end_line = 1; }},
           {"its own parent", [](auto& facts) { facts.definitions[1].parent = 1; }},
           {"inside of nothing", [](auto& facts) { facts.uses[0].enclosing = 2; }},
           {"name apart from the qualified one", [](auto& facts) { facts.definitions[0].name = "long.name"; }},
           {"no UTF-8", [](auto& facts) { facts.uses[0].name = "a\xFF"; }},
           {"UTF-8 cut off", [](auto& facts) { facts.definitions[0].docstring = "\xE2\x82"; }},
           {"more uses than bytes", [](auto& facts) { facts.uses.resize(5 * TEXT.size(), facts.uses[0]); }},
       }) {
    facts::FileFacts facts = facts_of_text();
    tell(facts);
    EXPECT_THROW(unpack_facts(pack_facts(facts), TEXT), MalformedMessage) << name;
  }
}

}  // namespace
}  // namespace tarnwick::sandbox
