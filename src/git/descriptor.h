// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace tarnwick::git {

class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }

  /// Negative when there is none.
  int number() const { return number_; }

 private:
  int number_;
};

}  // namespace tarnwick::git
