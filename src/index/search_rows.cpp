#include "index/search_rows.h"

#include <algorithm>
#include <cstddef>

#include "index/packed_numbers.h"
#include "words/vocabulary.h"
#include "words/words.h"

namespace tarnwick::index {
namespace {

// Positions in SEARCH_COLUMNS.
enum Column : std::size_t { BODY, AGAIN, NAME, SCOPE, SIGNATURE, DOCSTRING, PATH };

/// Numbers of words in any order.
using Words = std::vector<std::uint32_t>;

/// How often words occur, in a table that is used again and again.
class Counts {
 public:
  void add(std::uint32_t word, std::uint32_t count = 1) {
    if (word >= counts_.size()) counts_.resize(std::max<std::size_t>(word + 1, 2 * counts_.size()));
    if (counts_[word] == 0) seen_.push_back(word);
    counts_[word] += count;
  }
  void add(const Words& words) {
    for (const std::uint32_t word : words) add(word);
  }

  /// Takes out what is there; a word that is not is no error.
  void subtract(const Words& words) {
    for (const std::uint32_t word : words)
      if (word < counts_.size() && counts_[word] > 0) --counts_[word];
  }

  /// Hands over each word, ascending, with its count, and forgets them.
  template <class Visit>
  void take(const Visit& visit) {
    std::sort(seen_.begin(), seen_.end());
    // A word that went and came again is there twice.
    for (const std::uint32_t word : seen_) {
      if (counts_[word] > 0) visit(word, counts_[word]);
      counts_[word] = 0;
    }
    seen_.clear();
  }

 private:
  std::vector<std::uint32_t> counts_;
  std::vector<std::uint32_t> seen_;
};

/// The identifiers of each definition's own text, and, last, of the text outside of them all.
std::vector<Words> own_words(words::Vocabulary& vocabulary, std::string_view text,
                             const std::vector<facts::Definition>& definitions) {
  std::vector<Words> bodies(definitions.size() + 1);
  std::vector<std::size_t> open = {definitions.size()};
  std::size_t position = 0;
  const auto advance = [&](std::size_t end) {
    end = std::min(end, text.size());
    if (end <= position) return;
    words::identifiers(text.substr(position, end - position), [&](std::string_view identifier) {
      if (identifier.size() > 1) bodies[open.back()].push_back(vocabulary.number_of(identifier));
    });
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

/// Writes the columns of the search tables.
class Columns {
 public:
  explicit Columns(const FileWords& words) {
    for (const std::string& identifier : words.vocabulary) words_of_identifier(identifier);
  }

  Words words_of(std::string_view text) {
    Words words;
    words::identifiers(text, [&](std::string_view identifier) {
      const std::span<const std::uint32_t> found = words_of_identifier(identifier);
      words.insert(words.end(), found.begin(), found.end());
    });
    return words;
  }

  void count(const WordBag& identifiers) {
    for (const auto [number, count] : identifiers)
      for (const std::uint32_t word : words_of_number(number)) counts_.add(word, count);
  }

  Counts& counts() { return counts_; }

  /// Writes what was counted, and what of it came more than once, and gives its size.
  std::uint32_t write(std::string& body, std::string& again) {
    std::uint32_t size = 0;
    counts_.take([&](std::uint32_t word, std::uint32_t count) {
      (body += vocabulary_.word(word)) += ' ';
      if (count > 1) (again += vocabulary_.word(word)) += ' ';
      size += std::min(count, MOST_REPEATS);
    });
    return size;
  }

  /// How many words were counted.
  std::uint32_t size() {
    std::uint32_t size = 0;
    counts_.take([&](std::uint32_t, std::uint32_t count) { size += std::min(count, MOST_REPEATS); });
    return size;
  }

  /// Writes the words, and gives their number.
  std::uint32_t write(std::string& column, const Words& words) {
    std::uint32_t size = 0;
    counts_.add(words);
    counts_.take([&](std::uint32_t word, std::uint32_t) {
      (column += vocabulary_.word(word)) += ' ';
      ++size;
    });
    return size;
  }

 private:
  /// Splits an identifier when it is new. Valid until the next new one.
  std::span<const std::uint32_t> words_of_identifier(std::string_view identifier) {
    const std::uint32_t number = identifiers_.number_of(identifier);
    if (number + 1 == ends_.size()) {
      words::search_words(identifier,
                          [&](std::string_view word) { split_.push_back(vocabulary_.number_of(word)); });
      ends_.push_back(split_.size());
    }
    return words_of_number(number);
  }

  std::span<const std::uint32_t> words_of_number(std::uint32_t number) const {
    return std::span(split_).subspan(ends_[number], ends_[number + 1] - ends_[number]);
  }

  words::Vocabulary identifiers_;
  words::Vocabulary vocabulary_;
  Words split_;                          // the words of the identifiers, one after the other
  std::vector<std::size_t> ends_ = {0};  // of the words of each identifier; the first is a beginning
  Counts counts_;
};

}  // namespace

FileWords words_of(std::string_view text, const std::vector<facts::Definition>& definitions) {
  words::Vocabulary vocabulary;
  FileWords words;
  Counts counts;
  for (const Words& body : own_words(vocabulary, text, definitions)) {
    counts.add(body);
    WordBag& bag = words.bodies.emplace_back();
    counts.take([&](std::uint32_t word, std::uint32_t count) {
      bag.push_back({word, std::min(count, MOST_REPEATS + 1)});
    });
  }
  words.vocabulary.reserve(vocabulary.size());
  for (std::uint32_t number = 0; number < vocabulary.size(); ++number)
    words.vocabulary.emplace_back(vocabulary.word(number));
  return words;
}

SearchRows search_rows(const FileWords& words, std::string_view path, std::span<const SymbolTexts> symbols) {
  if (words.bodies.size() != symbols.size() + 1) throw DamagedValue("words");
  Columns columns(words);
  SearchRows result;
  result.rows.resize(symbols.size() + 1);
  result.sizes.resize(symbols.size() + 1);
  for (const WordBag& body : words.bodies) columns.count(body);
  SearchRow& file = result.rows.front();
  result.sizes.front() = columns.size();
  result.sizes.front() += columns.write(file[PATH], columns.words_of(path));
  columns.count(words.bodies.back());
  columns.write(file[BODY], file[AGAIN]);
  std::vector<Words> inner_names(symbols.size());
  // Backwards, since what is inside a symbol follows it.
  for (std::size_t i = symbols.size(); i-- > 0;) {
    const SymbolTexts& symbol = symbols[i];
    const Words name = columns.words_of(symbol.name);
    const Words signature = columns.words_of(symbol.signature);
    SearchRow& row = result.rows[i + 1];
    columns.count(words.bodies[i]);
    columns.counts().subtract(signature.empty() ? name : signature);
    columns.counts().add(inner_names[i]);
    std::uint32_t& size = result.sizes[i + 1];
    size = columns.write(row[BODY], row[AGAIN]);
    size += columns.write(row[NAME], name);
    size += columns.write(row[SCOPE], columns.words_of(symbol.scope));
    size += columns.write(row[SIGNATURE], signature);
    size += columns.write(row[DOCSTRING], columns.words_of(symbol.docstring));
    if (!symbol.parent || *symbol.parent >= i) continue;
    Words& outer = inner_names[*symbol.parent];
    outer.insert(outer.end(), name.begin(), name.end());
  }
  return result;
}

}  // namespace tarnwick::index
