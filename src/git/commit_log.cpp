#include "git/commit_log.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "text/surrogates.h"

namespace tarnwick::git {
namespace {

constexpr char COMMIT_MARK = '\x01';
constexpr char FIELD_MARK = '\x02';

/// Bytes of a line that matter; a patch of a minified file has lines of megabytes.
constexpr std::size_t LINE_BYTES = 4096;

bool is_hash(std::string_view text) {
  return (text.size() == 40 || text.size() == 64) &&
         std::ranges::all_of(text, [](unsigned char c) { return std::isxdigit(c) != 0; });
}

/// Takes `log -z --name-only` apart: a mark, hash, subject, then the files, each ended by a NUL.
class LogReader {
 public:
  void take(std::string_view piece) {
    while (!piece.empty()) {
      const std::size_t end = piece.find(COMMIT_MARK);
      record_ += piece.substr(0, end);
      if (end == std::string_view::npos) return;
      finish_record();
      piece.remove_prefix(end + 1);
    }
  }

  /// What was read whole; a last commit that was cut off is left out.
  std::vector<Commit> commits(bool is_whole) {
    if (is_whole) finish_record();
    return std::move(commits_);
  }

 private:
  void finish_record() {
    const std::string record = std::exchange(record_, {});
    const std::size_t subject = record.find(FIELD_MARK);
    const std::size_t files = subject == std::string::npos ? subject : record.find(FIELD_MARK, subject + 1);
    if (files == std::string::npos) return;
    Commit commit{record.substr(0, subject), record.substr(subject + 1, files - subject - 1), {}};
    for (std::size_t at = files + 1; at < record.size();) {
      const std::size_t end = std::min(record.find('\0', at), record.size());
      const std::size_t begin = at + (at < end && record[at] == '\n');
      if (begin < end)
        commit.files.push_back(text::from_os(std::string_view(record).substr(begin, end - begin)));
      at = end + 1;
    }
    commits_.push_back(std::move(commit));
  }

  std::string record_;
  std::vector<Commit> commits_;
};

/// Takes `diff-tree --stdin -p` apart, line by line.
class PatchReader {
 public:
  using Visit = std::function<void(const std::string&, std::vector<Touched>)>;

  explicit PatchReader(const Visit& visit) : visit_(&visit) {}

  void take(std::string_view piece) {
    while (!piece.empty()) {
      const std::size_t end = piece.find('\n');
      const std::string_view part = piece.substr(0, end);
      line_ += part.substr(0, LINE_BYTES - std::min(LINE_BYTES, line_.size()));
      if (end == std::string_view::npos) return;
      finish_line();
      line_.clear();
      piece.remove_prefix(end + 1);
    }
  }

  void finish_commit() {
    if (!hash_.empty()) (*visit_)(hash_, std::move(touched_));
    touched_ = {};
    hash_.clear();
    in_file_ = false;
  }

 private:
  void finish_line() {
    if (is_hash(line_)) {
      finish_commit();
      hash_ = line_;
    } else if (line_.starts_with("diff --git ")) {
      in_file_ = false;
    } else if (!in_file_ && line_.starts_with("+++ b/")) {
      const std::string_view path = std::string_view(line_).substr(6);
      touched_.push_back({text::from_os(path.substr(0, path.find('\t'))), {}});
      in_file_ = true;
    } else if (in_file_ && line_.starts_with("@@ ")) {
      add_heading();
    }
  }

  void add_heading() {
    const std::size_t end = line_.find("@@", 3);
    if (end == std::string::npos) return;
    std::vector<std::string>& names = touched_.back().names;
    const auto is_word = [](unsigned char c) { return std::isalnum(c) || c == '_'; };
    for (auto at = line_.begin() + static_cast<std::ptrdiff_t>(end) + 2; at != line_.end();) {
      const auto begin = std::find_if(at, line_.end(), is_word);
      at = std::find_if_not(begin, line_.end(), is_word);
      std::string name(begin, at);
      if (name.size() > 1 && !std::isdigit(static_cast<unsigned char>(name[0])) &&
          std::ranges::find(names, name) == names.end())
        names.push_back(std::move(name));
    }
  }

  const Visit* visit_;
  std::string line_;
  std::string hash_;
  std::vector<Touched> touched_;
  bool in_file_ = false;
};

std::vector<std::string> lines_of(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::string joined_lines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text.append(line).push_back('\n');
  return text;
}

}  // namespace

std::optional<std::string> head_commit(const std::filesystem::path& root, const Patience& patience) {
  std::string output;
  const GitEnd end = run_git(root, {"rev-parse", "--verify", "--quiet", "HEAD^{commit}"}, {}, patience,
                             [&](std::string_view piece) { output += piece; });
  while (output.ends_with('\n')) output.pop_back();
  return end == GitEnd::finished && is_hash(output) ? std::optional(output) : std::nullopt;
}

std::optional<std::vector<std::string>> list_commits(const std::filesystem::path& root,
                                                     const std::string& head, std::size_t limit,
                                                     const Patience& patience) {
  std::string output;
  const GitEnd end =
      run_git(root, {"rev-list", "--no-merges", "--max-count=" + std::to_string(limit), head, "--"}, {},
              patience, [&](std::string_view piece) { output += piece; });
  return end == GitEnd::finished ? std::optional(lines_of(output)) : std::nullopt;
}

std::vector<Commit> read_commits(const std::filesystem::path& root, const std::vector<std::string>& hashes,
                                 const Patience& patience) {
  if (hashes.empty()) return {};
  LogReader reader;
  const GitEnd end =
      run_git(root,
              {"log", "--stdin", "--no-walk=unsorted", "--no-renames", "--name-only", "-z", "--relative",
               "--no-show-signature", "--no-color", "--encoding=UTF-8", "--format=%x01%H%x02%s%x02", "--"},
              joined_lines(hashes), patience, [&](std::string_view piece) { reader.take(piece); });
  return reader.commits(end == GitEnd::finished);
}

void read_touched(const std::filesystem::path& root, const std::vector<std::string>& hashes,
                  const Patience& patience,
                  const std::function<void(const std::string&, std::vector<Touched>)>& visit) {
  PatchReader reader(visit);
  const GitEnd end =
      run_git(root,
              {"diff-tree", "--stdin", "-r", "--root", "-p", "-U0", "--no-renames", "--relative",
               "--no-color", "--no-ext-diff", "--no-textconv", "--src-prefix=a/", "--dst-prefix=b/"},
              joined_lines(hashes), patience, [&](std::string_view piece) { reader.take(piece); });
  if (end == GitEnd::finished) reader.finish_commit();
}

}  // namespace tarnwick::git
