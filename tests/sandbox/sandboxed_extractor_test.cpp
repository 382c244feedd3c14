// This program is its own worker: see main at the end.
#include "sandbox/sandboxed_extractor.h"

#include <dirent.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is POSIX's
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "extraction/dump.h"
#include "extraction/parser_memory.h"
#include "extraction/source_extractor.h"
#include "sandbox/worker.h"
#include "text/lines.h"

namespace tarnwick::sandbox {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using facts::ParseFailure;

/// Real languages, and one whose texts say what happens to the process that reads them.
class MisbehavingExtractor final : public facts::Extractor {
 public:
  std::string language_of(std::string_view path, std::optional<std::string_view> text) const override {
    return sources_.language_of(path, text);
  }
  bool is_source(std::string_view language) const override { return sources_.is_source(language); }
  bool is_test_path(std::string_view path) const override { return sources_.is_test_path(path); }
  facts::FileFacts read_plainly(std::string_view language, std::string_view text,
                                std::string_view path) const override {
    return sources_.read_plainly(language, text, path);
  }
  facts::FileFacts extract(std::string_view language, std::string_view text,
                           std::string_view path) const override {
    if (language != "trouble") return sources_.extract(language, text, path);
    misbehave(text);
    return {};
  }

 private:
  static void misbehave(std::string_view text) {
    static std::vector<std::string> kept;
    static bool damaged = false;
    if (text == "damage") damaged = true;
    if (text == "crash" || (text == "victim" && damaged)) *static_cast<volatile int*>(nullptr) = 1;
    if (text == "kill") ::raise(SIGKILL);
    if (text == "exit") ::_exit(0);
    if (text == "open") ::open("/etc/passwd", O_RDONLY | O_CLOEXEC);
    if (text == "connect") ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (text == "fork") ::fork();
    if (text == "run memory") ::mmap(nullptr, 1, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (text == "write elsewhere") [[maybe_unused]] const auto put = ::write(STDERR_FILENO, "x", 1);
    if (text == "nonsense") [[maybe_unused]] const auto put = ::write(STDOUT_FILENO, "\1\0\0\0x", 5);
    if (text == "endless message") [[maybe_unused]] const auto put = ::write(STDOUT_FILENO, "\xFF\xFF\xFF\xFF", 4);
    while (text == "hang") ::kill(0, 0 * ++turns());
    while (text == "stop") std::this_thread::yield();
    while (text == "swell") kept.emplace_back(1 << 20U, 'x');
    if (text == "retire") kept.emplace_back(std::size_t{MAX_LIFE_MEBIBYTES + 20} << 20U, 'x');
  }
  static int& turns() {
    static int turns = 0;
    return turns;
  }

  extraction::SourceExtractor sources_;
};

const MisbehavingExtractor INNER;
constexpr Limits SMALL = {.processor_time = 150ms, .memory_bytes = std::uint64_t{300} << 20U};

std::string repeat(std::string_view piece, std::size_t times) {
  std::string result;
  for (std::size_t i = 0; i < times; ++i) result += piece;
  return result;
}

/// The children of this process that have not been waited for.
std::vector<pid_t> children() {
  std::ifstream list("/proc/self/task/" + std::to_string(::getpid()) + "/children");
  std::vector<pid_t> result;
  for (pid_t id = 0; list >> id;) result.push_back(id);
  return result;
}

constexpr std::string_view SOUND = "class A:\n    def m(self):\n        return f()\n";

void expect_sound(const SandboxedExtractor& extractor) {
  EXPECT_EQ(extraction::dump(extractor.extract("python", SOUND, "a.py")),
            extraction::dump(INNER.extract("python", SOUND, "a.py")));
}

struct Trouble {
  std::string_view text;
  ParseFailure failure;
};

class SandboxTrouble : public testing::TestWithParam<Trouble> {};

TEST_P(SandboxTrouble, CostsTheFileAlone) {
  const SandboxedExtractor extractor(INNER, SMALL);
  expect_sound(extractor);
  const auto start = std::chrono::steady_clock::now();
  const auto facts = extractor.extract("trouble", GetParam().text, "x");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 15 * SMALL.processor_time + 5s);
  EXPECT_EQ(facts::reason(facts.failure), facts::reason(GetParam().failure));
  EXPECT_TRUE(facts.is_fallback);
  expect_sound(extractor);
}

INSTANTIATE_TEST_SUITE_P(Kinds, SandboxTrouble,
                         testing::Values(Trouble{"crash", ParseFailure::crashed},
                                         Trouble{"kill", ParseFailure::crashed},
                                         Trouble{"exit", ParseFailure::crashed},
                                         Trouble{"open", ParseFailure::crashed},
                                         Trouble{"connect", ParseFailure::crashed},
                                         Trouble{"fork", ParseFailure::crashed},
                                         Trouble{"run memory", ParseFailure::crashed},
                                         Trouble{"write elsewhere", ParseFailure::crashed},
                                         Trouble{"nonsense", ParseFailure::crashed},
                                         Trouble{"endless message", ParseFailure::crashed},
                                         Trouble{"hang", ParseFailure::too_slow},
                                         Trouble{"swell", ParseFailure::too_large}),
                         [](const auto& tested) {
                           std::string name(tested.param.text);
                           std::ranges::replace(name, ' ', '_');
                           return name;
                         });

TEST(Sandbox, LeavesNoProcessBehind) {
  {
    const SandboxedExtractor extractor(INNER, SMALL);
    expect_sound(extractor);
    EXPECT_EQ(children().size(), 1U);
    extractor.extract("trouble", "crash", "x");
  }
  EXPECT_EQ(children().size(), 0U);
}

}  // namespace
}  // namespace tarnwick::sandbox
