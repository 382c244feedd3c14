#include "mcp/stored_source.h"

#include <poll.h>
#include <spdlog/spdlog.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include "index/errors.h"
#include "index/index_file.h"
#include "index/index_status.h"
#include "indexing/history_store.h"
#include "indexing/tree_directories.h"
#include "mcp/stored_view.h"
#include "text/surrogates.h"
#include "util/threads.h"

namespace tarnwick::mcp {
namespace {

using namespace std::chrono_literals;

/// A call that waits looks this often whether it was cancelled.
constexpr auto LOOK = 20ms;

/// A first indexing begins behind the first call, or this long after the start when none comes.
constexpr auto HEAD_START = 300ms;

/// Answering goes before indexing.
constexpr int NICE = 5;

bool has_whole_index(const std::filesystem::path& file) {
  try {
    return index::indexing_progress(*index::open_for_reading(file)) == 100;
  } catch (const index::IndexError&) {
    return false;  // the update makes one, or tells why it cannot
  }
}

bool matters(const facts::Extractor& extractor, std::string_view path) {
  return path.ends_with(".gitignore") || indexing::may_matter(extractor, path);
}

/// The directories of the files in the index, and those around them.
indexing::Directories indexed_directories(const std::filesystem::path& index_file) {
  indexing::Directories directories = {""};
  const auto connection = index::open_for_reading(index_file);
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
    const util::Lock lock(source_.mutex_);
    source_.queue_.note_progress(done, total);
  }
  void message(std::string_view text) override { spdlog::warn("{}: {}", source_.name(), text); }

 private:
  StoredSource& source_;
};

StoredSource::StoredSource(std::string name, indexing::IndexOptions update, bool watch)
    : name_(std::move(name)),
      update_(std::move(update)),
      pool_(update_.index_file),
      watch_(
          update_.root, [this](std::string_view path) { return matters(*update_.extractor, path); }, watch),
      queue_(has_whole_index(update_.index_file)),
      thread_([this](const std::stop_token& stop) { run(stop); }),
      history_thread_([this](const std::stop_token& stop) { run_history(stop); }) {}

StoredSource::~StoredSource() {
  thread_.request_stop();  // both before either is waited for
  history_thread_.request_stop();
}

Indexing StoredSource::refresh(const Call& call) {
  std::error_code error;
  const bool lost = !std::filesystem::exists(update_.index_file, error);
  util::Lock lock(mutex_);
  const UpdateQueue::Number needed =
      queue_.request({.changed = watch_.changed(), .unwatched = !watch_.complete(), .lost = lost});
  if (queue_.is_due()) wakeup_.signal();
  const auto end = std::min(call.deadline(), queue_.wait_ends(Call::Clock::now()));
  while (queue_.is_worth_waiting(needed) && Call::Clock::now() < end) {
    changed_.wait_for(lock, LOOK);
    call.check();
  }
  return queue_.state(needed);
}

std::unique_ptr<View> StoredSource::view(const Call& call) {
  std::unique_ptr<View> view = open_view(pool_, update_.root, call);
  {
    const util::Lock lock(mutex_);
    if (!queue_.is_held_back()) return view;
    queue_.note_view();
  }
  changed_.notify_all();
  return view;
}

void StoredSource::renew() {
  const util::Lock lock(mutex_);
  queue_.request_rebuild();
  wakeup_.signal();
}

void StoredSource::run(const std::stop_token& stop) {
  setpriority(PRIO_PROCESS, 0, NICE);  // of this thread and those it starts
  const std::stop_callback wake(stop, [this] { wakeup_.signal(); });
  await_first_call(stop);
  std::chrono::milliseconds rest = 0ms;
  while (!stop.stop_requested()) {
    await_change(stop, rest);
    if (stop.stop_requested()) return;
    const auto start = Call::Clock::now();
    update_once(stop);
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Call::Clock::now() - start);
    rest = UpdateQueue::rest_after(took);
  }
}

void StoredSource::await_first_call(const std::stop_token& stop) {
  util::Lock lock(mutex_);
  changed_.wait_for(lock, stop, HEAD_START, [this]() REQUIRES(mutex_) { return !queue_.is_held_back(); });
}

void StoredSource::await_change(const std::stop_token& stop, std::chrono::milliseconds rest) {
  const auto is_due = [this] {
    const util::Lock lock(mutex_);
    return queue_.is_due();
  };
  const auto rested_at = Call::Clock::now() + rest;
  std::array<pollfd, 2> waiting{{{wakeup_.descriptor(), POLLIN, 0}, {watch_.descriptor(), POLLIN, 0}}};
  while (!is_due() && !stop.stop_requested()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(rested_at - Call::Clock::now());
    const bool rested = left <= 0ms;
    if (rested && watch_.changed()) return;
    poll(waiting.data(), rested ? waiting.size() : 1, rested ? -1 : static_cast<int>(left.count()));
    wakeup_.clear();
  }
}

void StoredSource::run_history(const std::stop_token& stop) {
  setpriority(PRIO_PROCESS, 0, NICE);
  while (!stop.stop_requested()) {
    {
      util::Lock lock(mutex_);
      const auto is_due = [this]() REQUIRES(mutex_) { return queue_.is_history_due(); };
      if (!changed_.wait(lock, stop, is_due)) return;
      queue_.start_history();
    }
    const auto failure = util::failure_of([&] {
      indexing::update_history(
          {.root = update_.root, .index_file = update_.index_file, .patience = {.stop = stop}});
    });
    if (failure) spdlog::warn("{}: the history could not be read: {}", name_, *failure);
    util::Lock lock(mutex_);  // commits follow edits; one look for many
    changed_.wait_for(lock, stop, UpdateQueue::MAX_REST, [] { return false; });
  }
}

void StoredSource::update_once(const std::stop_token& stop) {
  UpdateQueue::Update update;
  {
    const util::Lock lock(mutex_);
    update = queue_.start(Call::Clock::now());
  }
  UpdateQueue::Outcome outcome;
  outcome.failure = util::failure_of([&] { perform(update, stop, outcome); });
  if (outcome.failure && !stop.stop_requested()) spdlog::error("{}: {}", name_, *outcome.failure);
  {
    const util::Lock lock(mutex_);
    queue_.finish(std::move(outcome));
  }
  changed_.notify_all();
}

void StoredSource::perform(const UpdateQueue::Update& update, const std::stop_token& stop,
                           UpdateQueue::Outcome& outcome) {
  const bool news = watch_.forget_changes();
  outcome.looked = news || update.must_look;
  if (!outcome.looked) return;
  if (update.rebuild) set_damaged_aside(stop);
  Reporter reporter(*this);
  indexing::IndexOptions options = update_;
  options.stop = stop;
  const indexing::IndexReport report = indexing::update_index(options, &reporter);
  outcome.whole = !report.interrupted;
  if (report.added + report.removed > 0 || watch_.has_grown() || update.number == 1) {
    outcome.more_watched = watch_directories();
  }
}

void StoredSource::set_damaged_aside(const std::stop_token& stop) {
  const index::WriterLock lock(update_.index_file, stop);
  const std::filesystem::path kept = index::set_aside(update_.index_file);
  spdlog::warn("{}: the index is damaged; kept as {}, rebuilding it", name_, kept.string());
}

bool StoredSource::watch_directories() {
  indexing::Directories directories = indexed_directories(update_.index_file);
  directories.merge(indexing::directories_without_files(update_.root, update_.include_ignored, directories));
  return watch_.watch(directories);
}

}  // namespace tarnwick::mcp
