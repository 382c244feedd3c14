#include "sandbox/sandboxed_extractor.h"

#include <algorithm>
#include <thread>
#include <utility>
#include <variant>

#include "sandbox/worker_process.h"

namespace tarnwick::sandbox {

/// One of the workers that may run at a time, for this object's life. The last one given back is taken first:
/// its caches are warm.
class SandboxedExtractor::Place {
 public:
  explicit Place(const SandboxedExtractor& all) : all_(all) {
    std::unique_lock lock(all_.mutex_);
    all_.freed_.wait(lock, [&] { return !all_.places_.empty(); });
    worker_ = std::move(all_.places_.back());
    all_.places_.pop_back();
  }
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;
  ~Place() {
    {
      const std::lock_guard lock(all_.mutex_);
      // The vector had room for it before. Running workers are at the end.
      all_.places_.insert(worker_ ? all_.places_.end() : all_.places_.begin(), std::move(worker_));
    }
    all_.freed_.notify_one();
  }

  bool is_running() const { return worker_ != nullptr; }

  WorkerProcess& worker() {
    if (!worker_) worker_ = std::make_unique<WorkerProcess>(all_.limits_);
    return *worker_;
  }

  std::variant<facts::FileFacts, facts::ParseFailure> extract(const Request& request) {
    auto outcome = worker().extract(request);
    if (worker_->is_spent()) worker_.reset();
    return outcome;
  }

 private:
  const SandboxedExtractor& all_;
  std::unique_ptr<WorkerProcess> worker_;
};

SandboxedExtractor::SandboxedExtractor(const facts::Extractor& inner, const Limits& limits)
    : inner_(inner), limits_(limits), places_(std::max(1U, std::thread::hardware_concurrency())) {}

SandboxedExtractor::~SandboxedExtractor() = default;

facts::FileFacts SandboxedExtractor::extract(std::string_view language, std::string_view text,
                                             std::string_view path) const {
  const Request request{language, text, path};
  Place place(*this);
  const bool was_running = place.is_running();
  auto outcome = place.extract(request);
  const auto* failure = std::get_if<facts::ParseFailure>(&outcome);
  if (failure != nullptr && was_running && *failure != facts::ParseFailure::too_slow) {
    outcome = place.extract(request);
    failure = std::get_if<facts::ParseFailure>(&outcome);
  }
  if (failure == nullptr) return std::get<facts::FileFacts>(std::move(outcome));
  facts::FileFacts facts = inner_.read_plainly(language, text, path);
  facts.failure = *failure;
  return facts;
}

bool SandboxedExtractor::is_filtered() const {
  return Place(*this).worker().is_filtered();
}

}  // namespace tarnwick::sandbox
