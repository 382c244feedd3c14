#include "retrieval/task_words.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/lowercase.h"
#include "words/characters.h"
#include "words/words.h"

namespace tarnwick::retrieval {

namespace {

using std::string_view_literals::operator""sv;

constexpr auto TEST_WORDS =
    std::to_array({"coverage"sv, "fixture"sv,   "fixtures"sv, "gtest"sv,     "jest"sv,   "junit"sv,
                   "mock"sv,     "mocked"sv,    "mocking"sv,  "mocks"sv,     "pytest"sv, "spec"sv,
                   "specs"sv,    "test"sv,      "testcase"sv, "testcases"sv, "tested"sv, "testing"sv,
                   "tests"sv,    "testsuite"sv, "unittest"sv, "unittests"sv, "vitest"sv});

bool is_identifier_start(std::string_view text, std::size_t at) {
  return at < text.size() && !words::is_digit(text[at]) && words::word_character(text, at) > 0;
}

// Whether an identifier's own spelling tells it from prose.
bool looks_like_code(std::string_view word) {
  bool lower = false;
  bool digit = false;
  std::size_t upper = 0;
  for (const char c : word) {
    if (words::is_upper(c) && (lower || upper > 0)) return true;  // camelCase, HTTPServer, URL
    upper += words::is_upper(c);
    lower = lower || words::is_lower(c);
    digit = digit || words::is_digit(c);
  }
  const std::size_t first = word.find_first_not_of('_');
  const bool underscore = word.find('_') != std::string_view::npos && first != std::string_view::npos;
  return underscore || (digit && word.size() > 2);
}

// A run of identifiers joined by separators.
struct Chain {
  std::string_view text;
  std::string_view last;    // the last identifier
  std::size_t longest = 0;  // the longest identifier
  std::size_t slashes = 0;
  bool qualified = false;    // a separator other than a slash or a hyphen
  bool dotted_last = false;  // the last separator is a dot
};

// The separator of a chain at `at`, empty when there is none.
std::string_view separator(std::string_view text, std::size_t at, bool path) {
  for (const std::string_view mark : {"::"sv, "->"sv, "."sv, "#"sv, R"(\)"sv})
    if (text.substr(at).starts_with(mark)) return text.substr(at, mark.size());
  if (path && at < text.size() && (text[at] == '/' || text[at] == '-')) return text.substr(at, 1);
  return {};
}

// The chain that starts at `begin`. In a path, segments may begin with a digit, as directories do.
Chain chain_at(std::string_view text, std::size_t begin, bool path) {
  Chain chain;
  for (std::size_t at = begin;;) {
    const std::size_t end = words::word_end(text, at);
    chain.last = text.substr(at, end - at);
    chain.longest = std::max(chain.longest, chain.last.size());
    chain.text = text.substr(begin, end - begin);
    const std::string_view mark = separator(text, end, path);
    const std::size_t next = end + mark.size();
    if (mark.empty() || next >= text.size()) return chain;
    if (path ? words::word_character(text, next) == 0 : !is_identifier_start(text, next)) return chain;
    chain.slashes += mark == "/";
    chain.qualified = chain.qualified || (mark != "/" && mark != "-");
    chain.dotted_last = mark == ".";
    at = next;
  }
}

// Whether a chain that was read as a path is one: it has an extension, or starts as a path does. "read/write"
// and "well-known" are prose.
bool is_path(const Chain& chain, std::string_view before) {
  const bool marked = chain.text.find_first_of("/-") != std::string_view::npos;
  const auto lower_or_digit = [](char c) { return words::is_lower(c) || words::is_digit(c); };
  const bool extension = chain.dotted_last && chain.last.size() <= 5 &&
                         std::all_of(chain.last.begin(), chain.last.end(), lower_or_digit);
  const bool rooted =
      chain.slashes > 0 && (before.ends_with("./") || before.ends_with("@") || before.ends_with("/"));
  return marked && (extension || rooted);
}

class NameScanner {
 public:
  explicit NameScanner(std::string_view task) : task_(task) {}

  std::vector<std::string> scan() {
    for (std::size_t at = 0; at < task_.size();) at = take(at);
    return std::move(names_);
  }

 private:
  // Reads what starts at `at` and answers where to go on.
  std::size_t take(std::size_t at) {
    const std::size_t end = words::word_end(task_, at);
    if (end == at) return at + 1;
    if (!is_identifier_start(task_, at)) return end;
    const Chain path = chain_at(task_, at, true);
    if (is_path(path, task_.substr(0, at)) || is_quoted(at, path.text)) return add(at, path.text);
    const Chain chain = chain_at(task_, at, false);
    if (is_name(at, chain)) return add(at, chain.text);
    return at + chain.text.size();
  }

  std::size_t add(std::size_t at, std::string_view name) {
    names_.emplace_back(name);
    return at + name.size();
  }

  bool is_quoted(std::size_t at, std::string_view name) const {
    const std::size_t end = at + name.size();
    if (at == 0 || end >= task_.size() || task_[at - 1] != task_[end]) return false;
    return std::string_view("`\"'").find(task_[end]) != std::string_view::npos;
  }

  bool is_name(std::size_t at, const Chain& chain) const {
    if (task_.substr(at + chain.text.size()).starts_with("()")) return true;
    if (chain.qualified) return chain.longest > 1;  // "e.g" and "i.e" are prose
    return looks_like_code(chain.last) && !words::is_common_word(text::lowercase(chain.last), true);
  }

  std::string_view task_;
  std::vector<std::string> names_;
};

std::vector<std::string> words_of(std::string_view task, bool task_verbs) {
  std::vector<std::string> words;
  words::split_parts(task, [&](std::string_view word) {
    if (words::is_common_word(word, task_verbs)) return;
    if (std::find(words.begin(), words.end(), word) == words.end()) words.emplace_back(word);
  });
  return words;
}

/// What stands before the colon of a task that begins like `area: …`; in `kind(area): …` what the brackets
/// hold.
std::string_view area_of(std::string_view task) {
  const std::size_t colon = task.find(": ");
  if (colon == std::string_view::npos) return {};
  std::string_view head = task.substr(0, colon);
  if (head.ends_with('!')) head.remove_suffix(1);
  if (head.ends_with(')')) head = head.substr(std::min(head.find('('), head.size()));
  // A blank that no comma precedes: prose.
  for (std::size_t at = head.find(' '); at != std::string_view::npos; at = head.find(' ', at + 1))
    if (at > 0 && head[at - 1] != ',') return {};
  return head;
}

std::vector<Text> texts(std::vector<std::string> words) {
  return {std::make_move_iterator(words.begin()), std::make_move_iterator(words.end())};
}

}  // namespace

std::vector<std::string> names_of(std::string_view task) {
  return NameScanner(task).scan();
}

std::vector<std::string> terms_of(std::string_view task) {
  std::vector<std::string> words = words_of(task, true);
  if (words.empty()) words = words_of(task, false);
  return words;
}

std::vector<std::string> area_words(std::string_view task) {
  std::vector<std::string> words;
  words::split_identifiers(area_of(task), [&](std::string_view word) {
    if (!words::is_common_word(word, true)) words.emplace_back(words::stem(word));
  });
  return words;
}

std::vector<Text> QueryTokenizer::query_names(const Text& task) const {
  return texts(names_of(task));
}

std::shared_ptr<const QueryTerms> QueryTokenizer::query_terms(const Text& task) const {
  return std::make_shared<TermList>(texts(terms_of(task)));
}

bool QueryTokenizer::is_test_query(const QueryTerms& terms) const {
  return std::any_of(TEST_WORDS.begin(), TEST_WORDS.end(),
                     [&](std::string_view word) { return terms.contains(word); });
}

}  // namespace tarnwick::retrieval
