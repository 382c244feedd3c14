#include "retrieval/name_search.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "text/lowercase.h"
#include "words/characters.h"

namespace tarnwick::retrieval {
namespace {

/// Names that more symbols bear than these say nothing.
constexpr std::size_t MAX_BEARERS = 100;

/// A name as its last part and what stands before that.
struct WrittenName {
  std::string_view last;
  std::string_view scope;  // the part before, empty when there is none
};

std::string_view last_word(std::string_view text) {
  std::size_t begin = 0;
  std::size_t end = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t stop = words::word_end(text, at);
    if (stop > at) {
      begin = at;
      end = stop;
    }
    at = std::max(stop, at + 1);
  }
  return text.substr(begin, end - begin);
}

WrittenName take_apart(std::string_view name) {
  const std::string_view last = last_word(name);
  const auto before = static_cast<std::size_t>(last.data() - name.data());
  return {last, last_word(name.substr(0, before))};
}

double certainty(const WrittenName& written, const index::SymbolHead& bearer) {
  double value = bearer.name == written.last ? 1 : 0.7;
  if (written.scope.empty()) return value;
  std::string_view scope = bearer.fqn;
  scope.remove_suffix(std::min(scope.size(), bearer.name.size()));
  if (text::lowercase(last_word(scope)) != text::lowercase(written.scope)) value *= 0.7;
  return value;
}

}  // namespace

Scores search_names(const index::Reader& reader, const std::vector<std::string>& names) {
  Scores scores;
  for (const std::string& name : names) {
    const WrittenName written = take_apart(name);
    if (written.last.empty()) continue;
    const auto bearers = reader.bearers(text::lowercase(written.last), MAX_BEARERS + 1);
    if (bearers.size() > MAX_BEARERS) continue;
    const double share = 1 / std::pow(static_cast<double>(bearers.size()), 0.25);
    for (const index::SymbolHead& bearer : bearers)
      raise(scores, bearer.id, share * certainty(written, bearer));
  }
  return scores;
}

}  // namespace tarnwick::retrieval
