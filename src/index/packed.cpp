#include "index/packed.h"

#include <zstd.h>

#include <algorithm>
#include <memory>
#include <new>
#include <set>
#include <stdexcept>
#include <unordered_map>
#include <utility>

namespace tarnwick::index {
namespace {

constexpr const char* WORDS = "words";
constexpr const char* HISTORY = "history";

constexpr int COMPRESSION_LEVEL = 3;
constexpr unsigned long long MAX_UNPACKED = 1ULL << 28U;

std::string compress(std::string_view bytes) {
  // Making a context costs more than compressing a small file.
  thread_local const std::unique_ptr<ZSTD_CCtx, std::size_t (*)(ZSTD_CCtx*)> context(ZSTD_createCCtx(),
                                                                                     ZSTD_freeCCtx);
  if (context == nullptr) throw std::bad_alloc();
  std::string packed(ZSTD_compressBound(bytes.size()), '\0');
  const std::size_t size = ZSTD_compressCCtx(context.get(), packed.data(), packed.size(), bytes.data(),
                                             bytes.size(), COMPRESSION_LEVEL);
  if (ZSTD_isError(size) != 0) throw std::runtime_error(std::string("zstd: ") + ZSTD_getErrorName(size));
  packed.resize(size);
  return packed;
}

/// Of up to 256 MiB.
std::string decompress(std::string_view packed, const char* what) {
  const unsigned long long size = ZSTD_getFrameContentSize(packed.data(), packed.size());
  if (size > MAX_UNPACKED) throw DamagedValue(what);
  std::string bytes(size, '\0');
  if (ZSTD_decompress(bytes.data(), bytes.size(), packed.data(), packed.size()) != size)
    throw DamagedValue(what);
  return bytes;
}

// The head of a use: its type and what follows, below the position of its name.
constexpr std::uint64_t TYPE_BITS = 7;
constexpr std::uint64_t QUALIFIED = 8;
constexpr std::uint64_t SEVERAL = 16;
constexpr unsigned NAME_SHIFT = 5;

std::vector<std::int64_t> distinct(std::vector<std::int64_t> numbers) {
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return numbers;
}

/// A difference of numbers and a count go into one number.
constexpr unsigned COUNT_BITS = 2;
static_assert(MOST_REPEATS + 1 <= 1U << COUNT_BITS);

void put_bag(std::string& out, const WordBag& bag) {
  put(out, bag.size());
  std::uint32_t last = 0;
  for (const auto [number, count] : bag)
    put(out, std::uint64_t{number - std::exchange(last, number)} << COUNT_BITS | (count - 1));
}

WordBag read_bag(PackedInput& input, std::size_t words) {
  WordBag result(input.count());
  std::uint64_t last = 0;
  for (auto& [number, count] : result) {
    const std::uint64_t read = input.number();
    last += read >> COUNT_BITS;
    if (last >= words) input.damaged();
    number = static_cast<std::uint32_t>(last);
    count = static_cast<std::uint32_t>(read & ((1U << COUNT_BITS) - 1)) + 1;
  }
  return result;
}

using Numbers = std::vector<std::uint32_t>;

void put_numbers(std::string& out, const Numbers& numbers) {
  put(out, numbers.size());
  for (const std::uint32_t number : numbers) put(out, std::uint64_t{number});
}

class HistoryReader {
 public:
  explicit HistoryReader(std::string_view bytes) : input_(bytes, HISTORY) {}

  PastCommits read() {
    PastCommits history;
    for (texts_ = input_.count(); history.texts.size() < texts_;)
      if (const std::size_t next = history.texts.size(); history.texts.number_of(input_.text()) != next)
        input_.damaged();
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
    if (number >= texts_) input_.damaged();
    return static_cast<std::uint32_t>(number);
  }

  PackedInput input_;
  std::size_t texts_ = 0;
};

}  // namespace

std::string pack_uses(const std::vector<UseRow>& uses, const std::vector<std::int64_t>& names) {
  std::string out;
  const std::vector<std::int64_t> known = distinct(names);
  put(out, known.size());
  std::int64_t last = 0;
  for (const std::int64_t name : known)
    put(out, static_cast<std::uint64_t>(name - std::exchange(last, name)));
  std::unordered_map<std::string_view, std::size_t> places;
  std::string qualifiers;
  for (const UseRow& use : uses) {
    if (!use.qualifier.empty() && places.try_emplace(use.qualifier, places.size()).second)
      put(qualifiers, use.qualifier);
  }
  put(out, places.size());
  out += qualifiers;
  put(out, uses.size());
  std::int64_t line = 0;
  std::int64_t enclosing = 0;
  for (std::size_t i = 0; i < uses.size(); ++i) {
    const UseRow& use = uses[i];
    const auto name =
        static_cast<std::uint64_t>(std::lower_bound(known.begin(), known.end(), names[i]) - known.begin());
    put(out, name << NAME_SHIFT | (use.qualifier.empty() ? 0 : QUALIFIED) | (use.count > 1 ? SEVERAL : 0) |
                 static_cast<std::uint64_t>(use.type));
    if (!use.qualifier.empty()) put(out, places.at(use.qualifier));
    if (use.count > 1) put(out, static_cast<std::uint64_t>(use.count));
    put_difference(out, use.line - std::exchange(line, use.line));
    const std::int64_t symbol = use.enclosing ? static_cast<std::int64_t>(*use.enclosing) + 1 : 0;
    put_difference(out, symbol - std::exchange(enclosing, symbol));
  }
  return out;
}

PackedUses::PackedUses(std::string_view packed) : input_(packed, "uses") {
  names_.resize(input_.count());
  std::int64_t last = 0;
  for (std::int64_t& name : names_) name = last += static_cast<std::int64_t>(input_.number());
  qualifiers_.resize(input_.count());
  for (std::string_view& qualifier : qualifiers_) qualifier = input_.text();
  left_ = input_.count();
}

bool PackedUses::next(PackedUse& use) {
  if (left_ == 0) return false;
  --left_;
  const std::uint64_t head = input_.number();
  if ((head & TYPE_BITS) >= USE_TYPES.size()) input_.damaged();
  use.type = static_cast<UseType>(head & TYPE_BITS);
  use.name = head >> NAME_SHIFT;
  use.qualifier = (head & QUALIFIED) != 0 ? qualifier(input_.number()) : std::string_view();
  use.count = (head & SEVERAL) != 0 ? static_cast<std::int64_t>(input_.number()) : 1;
  use.line = line_ += input_.difference();
  use.enclosing = enclosing_ += input_.difference();
  if (use.name >= names_.size()) input_.damaged();
  return true;
}

std::string_view PackedUses::qualifier(std::uint64_t position) const {
  if (position >= qualifiers_.size()) input_.damaged();
  return qualifiers_[position];
}

std::string pack_imports(const std::vector<facts::Import>& imports) {
  std::string out;
  std::set<std::pair<std::string_view, std::string_view>> known;
  for (const facts::Import& import : imports) {
    if (!known.emplace(import.module, import.name).second) continue;
    put(out, import.module);
    put(out, import.name);
  }
  return out;
}

std::vector<StoredImport> unpack_imports(std::string_view packed) {
  std::vector<StoredImport> imports;
  for (PackedInput input(packed, "imports"); !input.empty();) {
    const std::string_view module = input.text();
    imports.push_back({module, input.text()});
  }
  return imports;
}

std::string pack_words(const FileWords& words) {
  std::string bytes;
  put(bytes, words.vocabulary.size());
  for (const std::string& word : words.vocabulary) put(bytes, word);
  put(bytes, words.bodies.size());
  for (const WordBag& body : words.bodies) put_bag(bytes, body);
  return compress(bytes);
}

std::string pack_sizes(const std::vector<std::uint32_t>& sizes) {
  std::string bytes;
  for (const std::uint32_t size : sizes) put(bytes, size);
  return bytes;
}

std::vector<std::uint32_t> unpack_sizes(std::string_view packed) {
  std::vector<std::uint32_t> sizes;
  for (PackedInput input(packed, "text sizes"); !input.empty();)
    sizes.push_back(static_cast<std::uint32_t>(std::min<std::uint64_t>(input.number(), UINT32_MAX)));
  return sizes;
}

FileWords unpack_words(std::string_view packed) {
  const std::string bytes = decompress(packed, WORDS);
  PackedInput input(bytes, WORDS);
  FileWords words;
  words.vocabulary.resize(input.count());
  for (std::string& word : words.vocabulary) word = input.text();
  words.bodies.resize(input.count());
  for (WordBag& body : words.bodies) body = read_bag(input, words.vocabulary.size());
  return words;
}

std::string pack_commits(const PastCommits& history) {
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
  const std::string bytes = decompress(packed, HISTORY);
  return HistoryReader(bytes).read();
}

}  // namespace tarnwick::index
