// Reads files in worker processes, so that a file harms nothing but what is known of it.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "facts/extractor.h"
#include "sandbox/confinement.h"

namespace tarnwick::sandbox {

class WorkerProcess;

/// Finds what another extractor does, in processes that run it (worker.h). A file that a worker dies of, or
/// whose limits do not suffice, is read by plain patterns in this process, and says why in
/// FileFacts::failure. The verdict is the file's own: where what came before may have damaged a worker, a new
/// one tries again.
///
/// The workers, one for each core at most, are started when they are needed and kept. Safe to call from
/// several threads, which wait for a worker in turn.
class SandboxedExtractor final : public facts::Extractor {
 public:
  /// `inner` tells languages and reads plainly; it must live as long as this, and be what this program hands
  /// to run_worker.
  explicit SandboxedExtractor(const facts::Extractor& inner, const Limits& limits = {});
  ~SandboxedExtractor() override;

  std::string language_of(std::string_view path, std::optional<std::string_view> text) const override {
    return inner_.language_of(path, text);
  }
  bool is_source(std::string_view language) const override { return inner_.is_source(language); }
  bool is_test_path(std::string_view path) const override { return inner_.is_test_path(path); }
  std::string version() const override { return inner_.version(); }
  facts::FileFacts read_plainly(std::string_view language, std::string_view text,
                                std::string_view path) const override {
    return inner_.read_plainly(language, text, path);
  }

  /// Throws std::runtime_error when no worker can be started. That is no matter of the file.
  facts::FileFacts extract(std::string_view language, std::string_view text,
                           std::string_view path) const override;

  /// Whether the kernel takes the workers' filter of system calls. Starts a worker, and throws as extract
  /// does.
  bool is_filtered() const;

 private:
  class Place;

  const facts::Extractor& inner_;
  Limits limits_;

  mutable std::mutex mutex_;
  mutable std::condition_variable freed_;
  mutable std::vector<std::unique_ptr<WorkerProcess>>
      places_;  ///< that are free; null where no worker runs yet
};

}  // namespace tarnwick::sandbox
