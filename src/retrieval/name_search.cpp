#include "retrieval/name_search.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "text/lowercase.h"
#include "words/characters.h"

namespace tarnwick::retrieval {
namespace {

using index::Connection;

/// Names that more symbols bear than these say nothing.
constexpr std::size_t MOST_BEARERS = 100;

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

struct Bearer {
  std::int64_t id = 0;
  std::string name;
  std::string fqn;
};

std::vector<Bearer> bearers_of(Connection& connection, std::string_view name) {
  std::vector<Bearer> bearers;
  SQLite::Statement& query =
      connection.prepare("SELECT id, name, fqn FROM named_symbols WHERE lower = ? LIMIT ?");
  query.bind(1, text::lowercase(name));
  query.bind(2, static_cast<std::int64_t>(MOST_BEARERS + 1));
  while (query.executeStep())
    bearers.push_back(
        {query.getColumn(0).getInt64(), query.getColumn(1).getString(), query.getColumn(2).getString()});
  query.reset();
  return bearers;
}

double certainty(const WrittenName& written, const Bearer& bearer) {
  double value = bearer.name == written.last ? 1 : 0.7;
  if (written.scope.empty()) return value;
  std::string_view scope = bearer.fqn;
  scope.remove_suffix(std::min(scope.size(), bearer.name.size()));
  if (text::lowercase(last_word(scope)) != text::lowercase(written.scope)) value *= 0.7;
  return value;
}

}  // namespace

Scores search_names(Connection& connection, const std::vector<std::string>& names) {
  Scores scores;
  for (const std::string& name : names) {
    const WrittenName written = take_apart(name);
    if (written.last.empty()) continue;
    const std::vector<Bearer> bearers = bearers_of(connection, written.last);
    if (bearers.size() > MOST_BEARERS) continue;
    const double share = 1 / std::pow(static_cast<double>(bearers.size()), 0.25);
    for (const Bearer& bearer : bearers) raise(scores, bearer.id, share * certainty(written, bearer));
  }
  return scores;
}

}  // namespace tarnwick::retrieval
