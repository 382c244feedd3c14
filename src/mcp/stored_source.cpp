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
#include <utility>

#include "index/errors.h"
#include "indexing/history_store.h"
#include "indexing/tree_directories.h"
#include "mcp/stored_view.h"
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

bool has_whole_index(const index::Index& index) {
  try {
    return index.snapshot()->progress() == 100;
  } catch (const index::IndexError&) {
    return false;  // the update makes one, or tells why it cannot
  }
}

bool matters(const facts::Extractor& extractor, std::string_view path) {
  return path.ends_with(".gitignore") || indexing::may_matter(extractor, path);
}

/// The directories of the files in the index, and those around them.
indexing::Directories indexed_directories(const index::Index& index) {
  indexing::Directories directories = {""};
  for (const std::string& file : index.snapshot()->paths()) {
    std::string path = text::to_os(file);
    for (std::size_t end = path.rfind('/'); end != std::string::npos; end = path.rfind('/')) {
      path.resize(end);
      if (!directories.insert(path).second) break;
    }
  }
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

StoredSource::StoredSource(std::string name, const std::filesystem::path& index_file,
                           indexing::IndexOptions update, bool watch)
    : name_(std::move(name)),
      update_(std::move(update)),
      store_(index_file, update_.root),
      watch_(
          update_.root, [this](std::string_view path) { return matters(*update_.extractor, path); }, watch),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      complete_(has_whole_index(store_.index())) {
  update_.index = &store_.index();
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
  const bool lost = !std::filesystem::exists(store_.index().file(), error);
  std::unique_lock lock(mutex_);
  if (lost) complete_ = false;
  // An update under way may have seen the change and told nobody yet. The first looks at what changed before
  // the start.
  std::uint64_t needed = std::max<std::uint64_t>(started_, 1);
  const bool unseen = !watch_.complete() || failure_ || (lost && finished_ == started_);
  if (watch_.changed() || unseen) needed = started_ + 1;
  want(needed);
  if (unseen) want_look();
  if (!complete_) return indexing(!failure_);
  // An update that has kept a call waiting in vain, for another process that writes, keeps no other.
  const bool running = finished_ < started_;
  const auto end = std::min(call.deadline(), (running ? began_at_ : Call::Clock::now()) + MOST_WAIT);
  while (finished_ < needed && files_total_ <= MOST_FILES_AWAITED && Call::Clock::now() < end) {
    changed_.wait_for(lock, LOOK);
    call.check();
  }
  return indexing(finished_ < needed);
}

std::unique_ptr<View> StoredSource::view(const Call& call) {
  std::unique_ptr<View> view = open_view(store_, call);
  const std::lock_guard lock(mutex_);
  if (!std::exchange(asked_, true)) changed_.notify_all();
  return view;
}

void StoredSource::renew(const index::IndexError& error) {
  const std::lock_guard lock(mutex_);
  if (renewing_) return;  // told by a call that began before
  store_.index().report_damage(error);
  damaged_ = true;
  complete_ = false;
  want_look();
}

void StoredSource::want(std::uint64_t update) {
  if (update <= wanted_) return;
  wanted_ = update;
  wake();
}

void StoredSource::want_look() {
  must_look_ = true;
  want(started_ + 1);
}

Indexing StoredSource::indexing(bool in_progress) const {
  constexpr std::int64_t ALMOST = 99;
  if (complete_ && !in_progress) return {false, 100, true, failure_};
  const std::int64_t unknown = complete_ ? ALMOST : 0;
  const std::int64_t share = files_total_ == 0 ? unknown : files_done_ * 100 / files_total_;
  return {in_progress, std::min(share, ALMOST), complete_, failure_};
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
      const bool news = changed_.wait(lock, stop, [&] { return complete_ && looked_ > seen; });
      if (!news) return;
      seen = looked_;
    }
    try {
      indexing::update_history({.root = update_.root, .index = update_.index, .patience = {.stop = stop}});
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
  bool must_look = false;
  {
    const std::lock_guard lock(mutex_);
    ++started_;
    began_at_ = Call::Clock::now();
    must_look = std::exchange(must_look_, false);
    renewing_ = std::exchange(damaged_, false);
  }
  const bool news = watch_.forget_changes();
  if (news || must_look) look_at_files(stop);
  const std::lock_guard lock(mutex_);
  finished_ = started_;
  renewing_ = false;
  changed_.notify_all();
}

void StoredSource::look_at_files(const std::stop_token& stop) {
  std::optional<std::string> failure;
  bool whole = false;
  try {
    Reporter reporter(*this);
    indexing::IndexOptions update = update_;
    update.stop = stop;
    const indexing::IndexReport report = indexing::update_index(update, &reporter);
    whole = !report.interrupted;
    if (report.added + report.removed > 0 || watch_.has_grown() || started_ == 1) watch_directories();
  } catch (const std::exception& error) {
    failure = error.what();
    if (!stop.stop_requested()) spdlog::error("{}: {}", name_, error.what());
  }
  const std::lock_guard lock(mutex_);
  failure_ = std::move(failure);
  complete_ = complete_ || whole;
  looked_ = started_;
  files_done_ = files_total_ = 0;
}

void StoredSource::watch_directories() {
  indexing::Directories directories = indexed_directories(store_.index());
  directories.merge(indexing::directories_without_files(update_.root, update_.include_ignored, directories));
  if (!watch_.watch(directories)) return;
  const std::lock_guard lock(mutex_);
  want_look();  // for what changed in them before
}

void StoredSource::wake() const {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t told = write(wake_, &one, sizeof one);
}

}  // namespace tarnwick::mcp
