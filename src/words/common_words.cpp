#include <algorithm>
#include <array>
#include <string_view>

#include "words/words.h"

namespace tarnwick::words {

namespace {

using std::string_view_literals::operator""sv;

// Words of grammar. Contractions come as their pieces: "doesn't" is split at the apostrophe.
constexpr auto GRAMMAR = std::to_array(
    {"a"sv,     "about"sv,   "after"sv,   "again"sv,   "all"sv,     "already"sv, "also"sv,  "always"sv,
     "am"sv,    "an"sv,      "and"sv,     "any"sv,     "are"sv,     "aren"sv,    "as"sv,    "at"sv,
     "be"sv,    "because"sv, "been"sv,    "before"sv,  "being"sv,   "both"sv,    "but"sv,   "by"sv,
     "can"sv,   "could"sv,   "couldn"sv,  "did"sv,     "didn"sv,    "do"sv,      "does"sv,  "doesn"sv,
     "doing"sv, "don"sv,     "each"sv,    "either"sv,  "else"sv,    "ever"sv,    "for"sv,   "from"sv,
     "had"sv,   "has"sv,     "hasn"sv,    "have"sv,    "haven"sv,   "having"sv,  "here"sv,  "how"sv,
     "i"sv,     "if"sv,      "in"sv,      "instead"sv, "into"sv,    "is"sv,      "isn"sv,   "it"sv,
     "its"sv,   "just"sv,    "ll"sv,      "may"sv,     "me"sv,      "more"sv,    "most"sv,  "my"sv,
     "no"sv,    "non"sv,     "not"sv,     "now"sv,     "of"sv,      "off"sv,     "on"sv,    "once"sv,
     "one"sv,   "only"sv,    "onto"sv,    "or"sv,      "other"sv,   "our"sv,     "out"sv,   "over"sv,
     "per"sv,   "please"sv,  "re"sv,      "same"sv,    "so"sv,      "some"sv,    "such"sv,  "than"sv,
     "that"sv,  "the"sv,     "their"sv,   "them"sv,    "then"sv,    "there"sv,   "these"sv, "they"sv,
     "this"sv,  "those"sv,   "through"sv, "to"sv,      "too"sv,     "under"sv,   "until"sv, "up"sv,
     "upon"sv,  "us"sv,      "ve"sv,      "very"sv,    "via"sv,     "was"sv,     "wasn"sv,  "we"sv,
     "were"sv,  "what"sv,    "when"sv,    "where"sv,   "whether"sv, "which"sv,   "while"sv, "who"sv,
     "why"sv,   "will"sv,    "with"sv,    "within"sv,  "without"sv, "won"sv,     "would"sv, "you"sv,
     "your"sv});

// Words that open tasks and say what to do, not where.
constexpr auto TASK_VERBS = std::to_array(
    {"add"sv,       "added"sv,     "adding"sv,    "adds"sv,        "allow"sv,      "allowed"sv,  "allows"sv,
     "avoid"sv,     "case"sv,      "cases"sv,     "change"sv,      "changed"sv,    "changes"sv,  "chore"sv,
     "correct"sv,   "correctly"sv, "ensure"sv,    "ensures"sv,     "feat"sv,       "feature"sv,  "fix"sv,
     "fixed"sv,     "fixes"sv,     "fixing"sv,    "get"sv,         "gets"sv,       "getting"sv,  "handle"sv,
     "handles"sv,   "handling"sv,  "implement"sv, "implemented"sv, "implements"sv, "improve"sv,  "improved"sv,
     "improves"sv,  "issue"sv,     "issues"sv,    "keep"sv,        "keeps"sv,      "let"sv,      "lets"sv,
     "make"sv,      "makes"sv,     "making"sv,    "missing"sv,     "must"sv,       "need"sv,     "needed"sv,
     "needs"sv,     "new"sv,       "perf"sv,      "prevent"sv,     "prevents"sv,   "properly"sv, "refactor"sv,
     "remove"sv,    "removed"sv,   "removes"sv,   "rename"sv,      "renamed"sv,    "return"sv,   "returned"sv,
     "returns"sv,   "set"sv,       "sets"sv,      "setting"sv,     "should"sv,     "shouldn"sv,  "support"sv,
     "supported"sv, "supports"sv,  "update"sv,    "updated"sv,     "updates"sv,    "use"sv,      "used"sv,
     "uses"sv,      "using"sv,     "want"sv,      "work"sv,        "working"sv,    "works"sv});

static_assert(std::is_sorted(GRAMMAR.begin(), GRAMMAR.end()));
static_assert(std::is_sorted(TASK_VERBS.begin(), TASK_VERBS.end()));

}  // namespace

bool is_common_word(std::string_view word, bool task_verbs) {
  return std::binary_search(GRAMMAR.begin(), GRAMMAR.end(), word) ||
         (task_verbs && std::binary_search(TASK_VERBS.begin(), TASK_VERBS.end(), word));
}

}  // namespace tarnwick::words
