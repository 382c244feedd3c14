#include "index/past_commits.h"

#include "index/compression.h"
#include "index/packed_numbers.h"

namespace tarnwick::index {
namespace {

using Numbers = std::vector<std::uint32_t>;

void put_numbers(std::string& out, const Numbers& numbers) {
  put(out, numbers.size());
  for (const std::uint32_t number : numbers) put(out, std::uint64_t{number});
}

class Reader {
 public:
  explicit Reader(std::string_view bytes) : input_(bytes) {}

  PastCommits read() {
    PastCommits history;
    for (texts_ = input_.count(); history.texts.size() < texts_;)
      if (const std::size_t next = history.texts.size(); history.texts.number_of(input_.text()) != next)
        PackedInput::damaged();
    history.commits.resize(input_.count());
    for (PastCommit& commit : history.commits) commit = read_commit();
    return history;
  }

 private:
  PastCommit read_commit() {
    PastCommit commit{.hash = std::string(input_.text()), .words = {}, .changed = {}};
    const std::uint64_t head = input_.number();
    commit.files = head >> 1U;
    commit.touched_read = (head & 1U) != 0;
    commit.words = read_numbers();
    commit.changed.resize(input_.count());
    for (ChangedFile& file : commit.changed) file = {.path = read_number(), .names = read_numbers()};
    return commit;
  }

  Numbers read_numbers() {
    Numbers numbers(input_.count());
    for (std::uint32_t& number : numbers) number = read_number();
    return numbers;
  }

  std::uint32_t read_number() {
    const std::uint64_t number = input_.number();
    if (number >= texts_) PackedInput::damaged();
    return static_cast<std::uint32_t>(number);
  }

  PackedInput input_;
  std::size_t texts_ = 0;
};

}  // namespace

std::string pack(const PastCommits& history) {
  std::string out;
  put(out, history.texts.size());
  for (std::uint32_t number = 0; number < history.texts.size(); ++number)
    put(out, history.texts.word(number));
  put(out, history.commits.size());
  for (const PastCommit& commit : history.commits) {
    put(out, commit.hash);
    put(out, std::uint64_t{commit.files} << 1U | (commit.touched_read ? 1U : 0U));
    put_numbers(out, commit.words);
    put(out, commit.changed.size());
    for (const ChangedFile& file : commit.changed) {
      put(out, std::uint64_t{file.path});
      put_numbers(out, file.names);
    }
  }
  return compress(out);
}

PastCommits unpack_commits(std::string_view packed) {
  const std::string bytes = decompress(packed);
  return Reader(bytes).read();
}

PastCommits read_commits(Connection& connection) {
  SQLite::Statement& query = connection.prepare("SELECT commits FROM history");
  const std::string packed = query.executeStep() ? query.getColumn(0).getString() : std::string();
  query.reset();
  return packed.empty() ? PastCommits() : unpack_commits(packed);
}

}  // namespace tarnwick::index
