#include "support/faults.h"

#include <dirent.h>
#include <dlfcn.h>
#include <sys/inotify.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <string_view>

namespace tarnwick::testing {
namespace {

struct Armed {
  std::atomic<int> error = 0;
  std::atomic<int> spared = 0;

  /// Whether this call is to fail; errno is set then.
  bool fails() {
    if (error == 0 || spared-- > 0) return false;
    errno = error;
    return true;
  }
};

std::array<Armed, 2> armed;

Armed& of(Fault::Call call) {
  return armed.at(static_cast<std::size_t>(call));
}

/// The system's function that the one of this name here hides.
template <class Function>
Function* hidden(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

Fault::Fault(Call call, int error, int spared) : call_(call) {
  of(call).spared = spared;
  of(call).error = error;
}

Fault::~Fault() {
  of(call_).error = 0;
}

}  // namespace tarnwick::testing

using tarnwick::testing::Fault;

extern "C" dirent* readdir(DIR* directory) {
  static auto* const real = tarnwick::testing::hidden<dirent*(DIR*)>("readdir");
  dirent* const entry = real(directory);
  const std::string_view name = entry == nullptr ? "." : entry->d_name;
  const bool counts = name != "." && name != "..";
  return counts && tarnwick::testing::of(Fault::Call::read_directory).fails() ? nullptr : entry;
}

extern "C" int inotify_add_watch(int descriptor, const char* path, std::uint32_t mask) noexcept {
  static auto* const real =
      tarnwick::testing::hidden<int(int, const char*, std::uint32_t)>("inotify_add_watch");
  return tarnwick::testing::of(Fault::Call::watch_directory).fails() ? -1 : real(descriptor, path, mask);
}
