#include "storage/search_text.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "workers/retrieval/words.h"

namespace tarnwick::storage {
namespace {

/// Collects words under numbers, in the order in which they come; at the end they are put in alphabetical
/// order.
class Vocabulary {
 public:
  void append(std::string_view text, WordBag& words) {
    retrieval::search_words(text, [&](std::string_view word) { words.push_back(number_of(word)); });
  }

  WordBag words_of(std::string_view text) {
    WordBag words;
    append(text, words);
    return words;
  }

  /// The words in order; `places` becomes the position of each number among them.
  std::vector<std::string> sorted(std::vector<std::uint32_t>& places) const {
    std::vector<std::uint32_t> order(words_.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), [&](auto a, auto b) { return *words_[a] < *words_[b]; });
    places.assign(order.size(), 0);
    std::vector<std::string> result(order.size());
    for (std::uint32_t place = 0; place < order.size(); ++place) {
      places[order[place]] = place;
      result[place] = *words_[order[place]];
    }
    return result;
  }

 private:
  std::uint32_t number_of(std::string_view word) {
    key_.assign(word);
    const auto [entry, is_new] = numbers_.try_emplace(key_, static_cast<std::uint32_t>(words_.size()));
    if (is_new) words_.push_back(&entry->first);
    return entry->second;
  }

  std::string key_;
  std::unordered_map<std::string, std::uint32_t> numbers_;
  std::vector<const std::string*> words_;
};

/// The own words of each definition, and, last, of the text outside of them all.
std::vector<WordBag> own_words(Vocabulary& vocabulary, std::string_view text,
                               const std::vector<indexing::Definition>& definitions) {
  std::vector<WordBag> bodies(definitions.size() + 1);
  std::vector<std::size_t> open = {definitions.size()};
  std::size_t position = 0;
  const auto advance = [&](std::size_t end) {
    end = std::min(end, text.size());
    if (end <= position) return;
    vocabulary.append(text.substr(position, end - position), bodies[open.back()]);
    position = end;
  };
  const auto close_before = [&](std::size_t start) {
    for (; open.size() > 1 && definitions[open.back()].end_byte <= start; open.pop_back()) {
      advance(definitions[open.back()].end_byte);
    }
  };
  for (std::size_t i = 0; i < definitions.size(); ++i) {
    close_before(definitions[i].start_byte);
    advance(definitions[i].start_byte);
    open.push_back(i);
  }
  for (; open.size() > 1; open.pop_back()) advance(definitions[open.back()].end_byte);
  advance(text.size());
  return bodies;
}

/// What qualifies the name: the qualified name without it.
std::string_view scope_of(const indexing::Definition& definition) {
  std::string_view scope = definition.fqn;
  if (scope.ends_with(definition.name)) scope.remove_suffix(definition.name.size());
  return scope;
}

/// Takes out of `words` one of each of `others`; leaves both sorted.
void subtract(WordBag& words, WordBag others) {
  std::sort(words.begin(), words.end());
  std::sort(others.begin(), others.end());
  WordBag rest;
  std::set_difference(words.begin(), words.end(), others.begin(), others.end(), std::back_inserter(rest));
  words = std::move(rest);
}

void settle(WordBag& words, const std::vector<std::uint32_t>& places) {
  for (std::uint32_t& word : words) word = places[word];
  std::sort(words.begin(), words.end());
  std::size_t kept = 0;
  for (const std::uint32_t word : words) {
    if (kept < MOST_REPEATS || words[kept - MOST_REPEATS] != word) words[kept++] = word;
  }
  words.erase(words.begin() + static_cast<std::ptrdiff_t>(kept), words.end());
}

}  // namespace

std::string FileWords::text(const WordBag& bag) const {
  std::string out;
  for (const std::uint32_t word : bag) (out += vocabulary[word]) += ' ';
  return out;
}

FileWords search_text(std::string_view path, std::string_view text, const indexing::FileFacts& facts) {
  Vocabulary vocabulary;
  FileWords words;
  words.path = vocabulary.words_of(path);
  std::vector<WordBag> bodies = own_words(vocabulary, text, facts.definitions);
  for (const WordBag& body : bodies) words.body.insert(words.body.end(), body.begin(), body.end());
  words.symbols.reserve(facts.definitions.size());
  for (std::size_t i = 0; i < facts.definitions.size(); ++i) {
    const indexing::Definition& definition = facts.definitions[i];
    SymbolWords symbol = {.name = vocabulary.words_of(definition.name),
                          .scope = vocabulary.words_of(scope_of(definition)),
                          .signature = vocabulary.words_of(definition.signature),
                          .docstring = vocabulary.words_of(definition.docstring),
                          .body = std::move(bodies[i])};
    subtract(symbol.body, symbol.signature.empty() ? symbol.name : symbol.signature);
    if (definition.parent && *definition.parent < i) {
      WordBag& outer = words.symbols[*definition.parent].body;
      outer.insert(outer.end(), symbol.name.begin(), symbol.name.end());
    }
    words.symbols.push_back(std::move(symbol));
  }
  std::vector<std::uint32_t> places;
  words.vocabulary = vocabulary.sorted(places);
  for (WordBag* bag : {&words.path, &words.body}) settle(*bag, places);
  for (SymbolWords& symbol : words.symbols) {
    for (WordBag* bag : {&symbol.name, &symbol.scope, &symbol.signature, &symbol.docstring, &symbol.body}) {
      settle(*bag, places);
    }
  }
  return words;
}

}  // namespace tarnwick::storage
