#include "storage/search_text.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "workers/retrieval/words.h"

namespace tarnwick::storage {
namespace {

/// How often a word of a body counts at most. Rankings flatten repetition anyway, and it makes up most of a
/// text.
constexpr int MOST_REPEATS = 3;

constexpr std::size_t NO_OWNER = static_cast<std::size_t>(-1);

void append_word(std::string& out, std::string_view word) {
  if (!out.empty()) out += ' ';
  out += word;
}

std::string words_of(std::string_view text) {
  std::string out;
  retrieval::search_words(text, [&](std::string_view word) { append_word(out, word); });
  return out;
}

/// The bodies of a file's symbols and of the file as a whole, filled in one walk over its text.
class Bodies {
 public:
  explicit Bodies(std::size_t count) : bodies_(count + 1), seen_(count + 1) {}

  void add(std::size_t owner, std::string_view text) {
    const std::size_t body = owner == NO_OWNER ? bodies_.size() - 1 : owner;
    retrieval::search_words(text, [&](std::string_view word) {
      const std::size_t number = number_of(word);
      count(bodies_[body], seen_[body], number);
      if (file_counts_[number] < MOST_REPEATS) {
        ++file_counts_[number];
        append_word(file_, word);
      }
    });
  }

  std::string take(std::size_t owner) { return std::move(bodies_[owner]); }
  std::string take_file() { return std::move(file_); }

 private:
  using Counts = std::unordered_map<std::size_t, int>;

  std::size_t number_of(std::string_view word) {
    const auto [entry, is_new] = numbers_.try_emplace(std::string(word), words_.size());
    if (is_new) {
      words_.push_back(&entry->first);
      file_counts_.push_back(0);
    }
    return entry->second;
  }

  void count(std::string& body, Counts& seen, std::size_t number) {
    if (seen[number]++ < MOST_REPEATS) append_word(body, *words_[number]);
  }

  std::unordered_map<std::string, std::size_t> numbers_;
  std::vector<const std::string*> words_;
  std::vector<int> file_counts_;
  std::vector<std::string> bodies_;
  std::vector<Counts> seen_;
  std::string file_;
};

/// Hands each stretch of the text to the innermost definition that holds it.
void add_bodies(Bodies& bodies, std::string_view text, const std::vector<indexing::Definition>& definitions) {
  std::vector<std::size_t> open;
  std::size_t position = 0;
  const auto advance = [&](std::size_t end) {
    end = std::min(end, text.size());
    if (end <= position) return;
    bodies.add(open.empty() ? NO_OWNER : open.back(), text.substr(position, end - position));
    position = end;
  };
  const auto close_before = [&](std::size_t start) {
    while (!open.empty() && definitions[open.back()].end_byte <= start) {
      advance(definitions[open.back()].end_byte);
      open.pop_back();
    }
  };
  for (std::size_t i = 0; i < definitions.size(); ++i) {
    close_before(definitions[i].start_byte);
    advance(definitions[i].start_byte);
    open.push_back(i);
  }
  for (; !open.empty(); open.pop_back()) advance(definitions[open.back()].end_byte);
  advance(text.size());
}

/// What qualifies the name: the qualified name without it.
std::string_view scope_of(const indexing::Definition& definition) {
  std::string_view scope = definition.fqn;
  if (scope.ends_with(definition.name)) scope.remove_suffix(definition.name.size());
  return scope;
}

}  // namespace

FileWords search_text(std::string_view path, std::string_view text, const indexing::FileFacts& facts) {
  Bodies bodies(facts.definitions.size());
  add_bodies(bodies, text, facts.definitions);
  FileWords words;
  words.path = words_of(path);
  words.body = bodies.take_file();
  words.symbols.reserve(facts.definitions.size());
  for (std::size_t i = 0; i < facts.definitions.size(); ++i) {
    const indexing::Definition& definition = facts.definitions[i];
    words.symbols.push_back({.name = words_of(definition.name),
                             .scope = words_of(scope_of(definition)),
                             .signature = words_of(definition.signature),
                             .docstring = words_of(definition.docstring),
                             .path = words.path,
                             .body = bodies.take(i)});
    if (definition.parent) append_word(words.symbols[*definition.parent].body, words.symbols.back().name);
  }
  return words;
}

}  // namespace tarnwick::storage
