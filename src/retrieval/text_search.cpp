#include "retrieval/text_search.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <optional>
#include <utility>

#include "index/search_rows.h"
#include "retrieval/bm25.h"
#include "retrieval/task_words.h"
#include "words/words.h"

namespace tarnwick::retrieval {
namespace {

/// How much a word counts in each of index::SEARCH_COLUMNS: for its symbol, and for its file, of which the
/// columns that repeat others say nothing new.
constexpr std::array<double, index::SEARCH_COLUMNS.size()> SYMBOL_WEIGHTS = {2, 2, 3, 1, 1, 0.5, 0};
constexpr std::array<double, index::SEARCH_COLUMNS.size()> FILE_WEIGHTS = {1, 1, 0, 0, 1, 0, 1};
constexpr std::size_t NAME = 2;
constexpr std::size_t PATH = index::SEARCH_COLUMNS.size() - 1;
static_assert(index::SEARCH_COLUMNS[NAME] == "name");

/// The search of one task.
class TextSearch {
 public:
  explicit TextSearch(const index::Reader& reader)
      : reader_(&reader),
        sizes_(reader.text_sizes()),
        symbols_(sizes_.symbols(), sizes_.average_symbol()),
        names_(sizes_.symbols().size()),
        files_(sizes_.files(), sizes_.average_file()) {}

  /// How telling the word is.
  double add(const std::string& word) {
    reader_->postings(word, [this](std::int64_t row, std::size_t column) { add(row, column); });
    end_file();
    symbols_.end_word();
    names_.end_word();
    const std::size_t files = files_.end_word();
    return files == 0 ? 0
                      : std::log(1 + static_cast<double>(sizes_.files().size()) / static_cast<double>(files));
  }

  TextScores scores() && {
    TextScores result;
    for (std::size_t file = 0; file < sizes_.files().size(); ++file) {
      const std::int64_t id = sizes_.id(file);
      if (files_.scores()[file] > 0) result.files.push_back({id, files_.scores()[file]});
      for (std::size_t n = sizes_.first(file); n < sizes_.first(file + 1); ++n) {
        const auto position = static_cast<std::int64_t>(n - sizes_.first(file)) + 1;
        const std::int64_t symbol = index::symbol_id(id, position);
        if (symbols_.scores()[n] > 0) result.symbols.push_back({symbol, symbols_.scores()[n]});
        if (names_.scores()[n] > 0) result.names.push_back({symbol, names_.scores()[n]});
      }
    }
    std::ranges::sort(paths_);
    paths_.erase(std::ranges::unique(paths_).begin(), paths_.end());
    result.paths = std::move(paths_);
    return result;
  }

 private:
  /// Rows come by ascending id.
  void add(std::int64_t row, std::size_t column) {
    if (index::file_of(row) != id_) {
      end_file();
      id_ = index::file_of(row);
      file_ = sizes_.find(id_);
    }
    if (!file_ || column >= SYMBOL_WEIGHTS.size()) return;  // a damaged index may name any column
    if (row != row_) end_row();
    row_ = row;
    in_symbol_ += SYMBOL_WEIGHTS[column];
    in_name_ = in_name_ || column == NAME;
    in_file_ += FILE_WEIGHTS[column];
    if (column == PATH) paths_.push_back(id_);
  }

  void end_row() {
    // Position 0 is the file itself.
    const std::size_t number = sizes_.first(*file_) + static_cast<std::size_t>(index::position_of(row_)) - 1;
    if (in_symbol_ > 0 && index::position_of(row_) > 0 && number < sizes_.first(*file_ + 1)) {
      symbols_.add(number, in_symbol_);
      if (in_name_) names_.add(number, 1);
    }
    in_symbol_ = 0;
    in_name_ = false;
  }

  void end_file() {
    if (!file_) return;
    end_row();
    if (in_file_ > 0) files_.add(*file_, in_file_);
    in_file_ = 0;
    file_.reset();
    id_ = -1;
  }

  const index::Reader* reader_;
  const index::TextSizes& sizes_;
  Bm25 symbols_, names_, files_;
  std::vector<std::int64_t> paths_;
  // Of the word at hand:
  std::int64_t id_ = -1, row_ = -1;
  std::optional<std::size_t> file_;
  double in_symbol_ = 0, in_file_ = 0;
  bool in_name_ = false;
};

}  // namespace

SearchWords SearchWords::of(std::string_view task) {
  SearchWords result;
  const auto add = [&](std::string_view word) {
    const std::string_view stemmed = words::stem(word);
    if (std::ranges::find(result.words, stemmed) == result.words.end()) result.words.emplace_back(stemmed);
  };
  const auto collect = [&](bool task_verbs) {
    words::split_identifiers(task, [&](std::string_view word) {
      if (!words::is_common_word(word, task_verbs)) add(word);
    });
  };
  collect(true);
  if (result.words.empty()) collect(false);
  std::string before;
  words::split_parts(task, [&](std::string_view word) {
    const bool counts = !words::is_common_word(word, false);
    if (counts && !before.empty()) add(before.append(word));
    before = counts ? word : std::string_view();
  });
  return result;
}

void SearchWords::keep_most_telling(std::size_t count,
                                    const std::unordered_map<std::string, double>& weights) {
  if (words.size() <= count) return;
  std::ranges::stable_sort(words, std::greater(), [&](const auto& word) { return weights.at(word); });
  words.resize(count);
}

TextScores search_text(const index::Reader& reader, const SearchWords& words) {
  TextSearch search(reader);
  std::unordered_map<std::string, double> weights;
  for (const std::string& word : words.words) weights[word] = search.add(word);
  TextScores scores = std::move(search).scores();
  scores.weights = std::move(weights);
  return scores;
}

std::unordered_map<std::string, double> word_weights(const index::Reader& reader, const SearchWords& words) {
  const auto rows = static_cast<double>(reader.text_sizes().symbols().size());
  std::unordered_map<std::string, double> weights;
  for (const std::string& word : words.words) {
    const std::int64_t with = reader.rows_with(word);
    weights[word] = with == 0 ? 0 : std::log(1 + rows / static_cast<double>(with));
  }
  return weights;
}

}  // namespace tarnwick::retrieval
