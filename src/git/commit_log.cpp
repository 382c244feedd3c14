#include "git/commit_log.h"

#include <algorithm>
#include <cctype>
#include <limits>
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
  explicit LogReader(const std::function<void(Commit)>& visit) : visit_(&visit) {}

  void take(std::string_view piece) {
    while (!piece.empty()) {
      const std::size_t end = piece.find(COMMIT_MARK);
      record_ += piece.substr(0, end);
      if (end == std::string_view::npos) return;
      finish_record();
      piece.remove_prefix(end + 1);
    }
  }

  /// To be called at the end of a whole log: the record before may be cut off.
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
    (*visit_)(std::move(commit));
  }

 private:
  const std::function<void(Commit)>* visit_;
  std::string record_;
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

std::optional<Head> read_head(const std::filesystem::path& root, const Patience& patience) try {
  const std::vector<std::string> lines = lines_of(git_output(
      {.directory = root,
       .arguments = {"rev-parse", "--is-shallow-repository", "--verify", "--quiet", "HEAD^{commit}"},
       .may_answer_none = true},
      patience));
  if (lines.size() != 2 || !is_hash(lines[1])) return std::nullopt;
  return Head{.commit = lines[1], .is_shallow = lines[0] == "true"};
} catch (const GitError& error) {
  if (error.kind() == GitError::Kind::not_a_repository) return std::nullopt;
  throw;
}

std::vector<std::string> list_commits(const std::filesystem::path& root, const std::string& head,
                                      std::size_t limit, const Patience& patience) {
  return lines_of(git_output(
      {.directory = root,
       .arguments = {"rev-list", "--no-merges", "--max-count=" + std::to_string(limit), head, "--"}},
      patience));
}

void read_commits(const std::filesystem::path& root, const std::vector<std::string>& hashes,
                  const Patience& patience, const std::function<void(Commit)>& visit) {
  if (hashes.empty()) return;
  LogReader reader(visit);
  run_git({.directory = root,
           .arguments = {"log", "--stdin", "--no-walk=unsorted", "--no-renames", "--name-only", "-z",
                         "--relative", "--no-show-signature", "--no-color", "--encoding=UTF-8",
                         "--format=%x01%H%x02%s%x02", "--"},
           .input = joined_lines(hashes)},
          patience, [&](std::string_view piece) { reader.take(piece); });
  reader.finish_record();
}

void read_touched(const std::filesystem::path& root, const std::vector<std::string>& hashes,
                  const Patience& patience,
                  const std::function<void(const std::string&, std::vector<Touched>)>& visit) {
  if (hashes.empty()) return;
  PatchReader reader(visit);
  Patience endless = patience;  // patches are read line by line and not kept
  endless.max_output = std::numeric_limits<std::size_t>::max();
  run_git(
      {.directory = root,
       .arguments = {"diff-tree", "--stdin", "-r", "--root", "-p", "-U0", "--no-renames", "--relative",
                     "--no-color", "--no-ext-diff", "--no-textconv", "--src-prefix=a/", "--dst-prefix=b/"},
       .input = joined_lines(hashes)},
      endless, [&](std::string_view piece) { reader.take(piece); });
  reader.finish_commit();
}

}  // namespace tarnwick::git
