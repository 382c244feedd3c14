#include "mcp/stored_source.h"

#include <poll.h>
#include <spdlog/spdlog.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "indexing/history_store.h"
#include "mcp/stored_view.h"
#include "storage/errors.h"
#include "storage/index_file.h"
#include "storage/index_status.h"
#include "text/surrogates.h"

namespace tarnwick::mcp {
namespace {

using namespace std::chrono_literals;

/// How long a call waits for an update, and how many files that may read.
constexpr auto MOST_WAIT = 2s;
constexpr std::int64_t MOST_FILES_AWAITED = 200;

/// A call that waits looks this often whether it was cancelled.
constexpr auto LOOK = 20ms;

/// Between two updates that no call asked for lie at least these, and ten times what the last one took: files
/// that change all the time do not keep a core busy.
constexpr auto LEAST_PAUSE = 200ms;
constexpr auto MOST_PAUSE = 5000ms;
constexpr int PAUSE_FACTOR = 10;

/// A first indexing begins behind the first call, or this long after the start when none comes.
constexpr auto HEAD_START = 300ms;

/// Answering goes before indexing.
constexpr int NICE = 5;

bool has_whole_index(const std::filesystem::path& file) {
  try {
    return storage::indexing_progress(*storage::open_for_reading(file)) == 100;
  } catch (const storage::IndexError&) {
    return false;  // the update makes one, or tells why it cannot
  }
}

/// The directories of the files in the index, and those around them.
std::unordered_set<std::string> indexed_directories(const std::filesystem::path& index_file) {
  std::unordered_set<std::string> directories = {""};
  const auto connection = storage::open_for_reading(index_file);
  connection->guard([&] {
    SQLite::Statement& query = connection->prepare("SELECT path FROM files");
    while (query.executeStep()) {
      std::string path = text::to_os(query.getColumn(0).getString());
      for (std::size_t end = path.rfind('/'); end != std::string::npos; end = path.rfind('/')) {
        path.resize(end);
        if (!directories.insert(path).second) break;
      }
    }
  });
  return directories;
}

}  // namespace

/// Hears of the running update.
class StoredSource::Reporter final : public indexing::Progress {
 public:
  explicit Reporter(StoredSource& source) : source_(source) {}
  void files_done(std::int64_t done, std::int64_t total, std::string_view /*path*/) override {
    source_.note_progress(done, total);
  }
  void message(std::string_view text) override { spdlog::warn("{}: {}", source_.name(), text); }

 private:
  StoredSource& source_;
};

StoredSource::StoredSource(std::string name, indexing::IndexOptions update, bool watch)
    : name_(std::move(name)),
      update_(std::move(update)),
      pool_(update_.index_file),
      watch_(update_.root, watch),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      complete_(has_whole_index(update_.index_file)) {
  if (wake_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
  history_thread_ = std::jthread([this](const std::stop_token& stop) { run_history(stop); });
}

StoredSource::~StoredSource() {
  thread_.request_stop();
  history_thread_.request_stop();
  wake();
  thread_.join();
  history_thread_.join();
  close(wake_);
}

Indexing StoredSource::refresh(const Call& call) {
  std::error_code error;
  const bool lost = !std::filesystem::exists(update_.index_file, error);
  std::unique_lock lock(mutex_);
  if (lost) complete_ = false;
  // An update under way may have seen the change and told nobody yet. The first looks at what changed before
  // the start.
  std::uint64_t needed = std::max<std::uint64_t>(started_, 1);
  if (watch_.changed() || !watch_.complete() || failure_ || (lost && finished_ == started_))
    needed = started_ + 1;
  want(needed);
  if (!complete_) return indexing();
  const auto end = std::min(call.deadline(), Call::Clock::now() + MOST_WAIT);
  while (finished_ < needed && files_total_ <= MOST_FILES_AWAITED && Call::Clock::now() < end) {
    changed_.wait_for(lock, LOOK);
    call.check();
  }
  Indexing state = indexing();
  state.in_progress = finished_ < needed;
  if (!state.in_progress) state.progress = 100;
  return state;
}

std::unique_ptr<View> StoredSource::view(const Call& call) {
  try {
    std::unique_ptr<View> view = open_view(pool_, update_.root, call);
    const std::lock_guard lock(mutex_);
    if (!std::exchange(asked_, true)) changed_.notify_all();
    return view;
  } catch (const storage::IndexError& error) {
    const std::lock_guard lock(mutex_);
    if (error.kind() == storage::IndexError::Kind::damaged) want(started_ + 1);  // which sets it aside
    throw;
  }
}

void StoredSource::want(std::uint64_t update) {
  if (update <= wanted_) return;
  wanted_ = update;
  wake();
}

Indexing StoredSource::indexing() const {
  constexpr std::int64_t ALMOST = 99;
  const std::int64_t share = files_total_ == 0 ? 0 : files_done_ * 100 / files_total_;
  return {!complete_ && !failure_, complete_ && files_total_ == 0 ? 100 : std::min(share, ALMOST), failure_};
}

void StoredSource::note_progress(std::int64_t done, std::int64_t total) {
  const std::lock_guard lock(mutex_);
  files_done_ = done;
  files_total_ = total;
}

void StoredSource::run(const std::stop_token& stop) {
  setpriority(PRIO_PROCESS, 0, NICE);  // of this thread and those it starts
  await_first_call(stop);
  std::chrono::milliseconds pause = 0ms;
  while (!stop.stop_requested()) {
    wait_for_change(stop, pause);
    if (stop.stop_requested()) return;
    const auto start = Call::Clock::now();
    update_once(stop);
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Call::Clock::now() - start);
    pause = std::clamp<std::chrono::milliseconds>(took * PAUSE_FACTOR, LEAST_PAUSE, MOST_PAUSE);
  }
}

void StoredSource::await_first_call(const std::stop_token& stop) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, stop, HEAD_START, [this] { return complete_ || asked_; });
}

void StoredSource::run_history(const std::stop_token& stop) {
  setpriority(PRIO_PROCESS, 0, NICE);
  std::uint64_t seen = 0;
  while (!stop.stop_requested()) {
    {
      std::unique_lock lock(mutex_);
      const bool news = changed_.wait(lock, stop, [&] { return complete_ && finished_ > seen; });
      if (!news) return;
      seen = finished_;
    }
    try {
      indexing::update_history(
          {.root = update_.root, .index_file = update_.index_file, .patience = {.stop = stop}});
    } catch (const std::exception& error) {
      spdlog::warn("{}: the history could not be read: {}", name_, error.what());
    }
    std::unique_lock lock(mutex_);  // commits follow edits; one look for many
    changed_.wait_for(lock, stop, MOST_PAUSE, [] { return false; });
  }
}

void StoredSource::wait_for_change(const std::stop_token& stop, std::chrono::milliseconds pause) const {
  const auto wanted = [this] {
    const std::lock_guard lock(mutex_);
    return wanted_ > started_;
  };
  const auto rested_at = Call::Clock::now() + pause;
  std::array<pollfd, 2> waiting{{{wake_, POLLIN, 0}, {watch_.descriptor(), POLLIN, 0}}};
  while (!wanted() && !stop.stop_requested()) {
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(rested_at - Call::Clock::now());
    const bool rested = rest <= 0ms;
    if (rested && watch_.changed()) return;
    poll(waiting.data(), rested ? waiting.size() : 1, rested ? -1 : static_cast<int>(rest.count()));
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken = read(wake_, &count, sizeof count);
  }
}

void StoredSource::update_once(const std::stop_token& stop) {
  {
    const std::lock_guard lock(mutex_);
    ++started_;
  }
  watch_.forget_changes();
  std::optional<std::string> failure;
  bool whole = false;
  try {
    Reporter reporter(*this);
    indexing::IndexOptions update = update_;
    update.stop = stop;
    const indexing::IndexReport report = indexing::update_index(update, &reporter);
    whole = !report.interrupted;
    if (report.added + report.removed > 0 || started_ == 1) watch_indexed_directories();
  } catch (const std::exception& error) {
    failure = error.what();
    if (!stop.stop_requested()) spdlog::error("{}: {}", name_, error.what());
  }
  const std::lock_guard lock(mutex_);
  failure_ = std::move(failure);
  complete_ = complete_ || whole;
  finished_ = started_;
  files_done_ = files_total_ = 0;
  changed_.notify_all();
}

void StoredSource::watch_indexed_directories() {
  if (!watch_.watch(indexed_directories(update_.index_file))) return;
  const std::lock_guard lock(mutex_);
  want(started_ + 1);  // for what changed in them before
}

void StoredSource::wake() const {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t told = write(wake_, &one, sizeof one);
}

}  // namespace tarnwick::mcp
