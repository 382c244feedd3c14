#include "sandbox/confinement.h"

#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <memory>
#include <utility>

#include "sandbox/worker.h"

namespace tarnwick::sandbox {
namespace {

using Filter = std::unique_ptr<void, decltype(&seccomp_release)>;

/// Those of the C library's memory and locks, of clocks, and of ends.
constexpr std::array ALLOWED = {SCMP_SYS(brk),          SCMP_SYS(munmap),         SCMP_SYS(mremap),
                                SCMP_SYS(madvise),      SCMP_SYS(futex),          SCMP_SYS(rt_sigreturn),
                                SCMP_SYS(exit),         SCMP_SYS(exit_group),     SCMP_SYS(clock_gettime),
                                SCMP_SYS(gettimeofday), SCMP_SYS(getrusage),      SCMP_SYS(setitimer),
                                SCMP_SYS(sched_yield),  SCMP_SYS(restart_syscall)};

/// The address space that this process takes now, in bytes; 0 where the kernel does not tell.
rlim_t address_space() {
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
}

bool allow(const Filter& filter, int call) {
  return seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0) == 0;
}

bool allow_on(const Filter& filter, int call, int descriptor) {
  return seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 1,
                          SCMP_A0(SCMP_CMP_EQ, static_cast<scmp_datum_t>(descriptor))) == 0;
}

/// Memory that can be run is what an intruder wants.
bool allow_without_execution(const Filter& filter, int call) {
  return seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 1, SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0)) ==
         0;
}

bool set_filter(int in, int out) {
  const Filter filter(seccomp_init(SCMP_ACT_KILL_PROCESS), seccomp_release);
  if (!filter) return false;
  for (const int call : ALLOWED)
    if (!allow(filter, call)) return false;
  return allow_on(filter, SCMP_SYS(read), in) && allow_on(filter, SCMP_SYS(write), out) &&
         allow_without_execution(filter, SCMP_SYS(mmap)) &&
         allow_without_execution(filter, SCMP_SYS(mprotect)) && seccomp_load(filter.get()) == 0;
}

}  // namespace

bool confine(int in, int out, const Limits& limits) {
  const std::array<std::pair<int, rlim_t>, 5> resources = {
      {{RLIMIT_AS, address_space() + limits.memory_bytes},
       {RLIMIT_CPU, MAX_LIFE_SECONDS * 2},
       {RLIMIT_CORE, 0},
       {RLIMIT_FSIZE, 0},
       {RLIMIT_NOFILE, 0}}};
  ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  for (const auto& [resource, maximum] : resources) {
    const rlimit limit{.rlim_cur = maximum, .rlim_max = maximum};
    ::setrlimit(static_cast<__rlimit_resource>(resource), &limit);
  }
  return set_filter(in, out);
}

void limit_processor_time(std::chrono::milliseconds time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const std::chrono::microseconds rest = time - seconds;
  const itimerval timer{.it_interval = {}, .it_value = {.tv_sec = seconds.count(), .tv_usec = rest.count()}};
  ::setitimer(ITIMER_PROF, &timer, nullptr);
}

}  // namespace tarnwick::sandbox
