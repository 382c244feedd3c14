// Load on the server: one caller, then eight, over a repository of some size.
//
//   mcp_load PROGRAM REPOSITORY [CALLS]
//
// A caller sends its next call when the last is answered. All calls go over one connection, as those of a
// client do, and no two ask for the same task. The index is made anew in a temporary folder.
#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is POSIX's
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Json = nlohmann::json;

double milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

/// A running server and the two ends of its streams.
class Server {
 public:
  Server(const char* program, const char* repository) {
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    if (pipe2(in.data(), O_CLOEXEC) != 0 || pipe2(out.data(), O_CLOEXEC) != 0)
      throw std::runtime_error("pipe");
    process_ = fork();
    if (process_ == 0) {
      dup2(in[0], STDIN_FILENO);
      dup2(out[1], STDOUT_FILENO);
      execl(program, program, "mcp", "--repo", repository, nullptr);
      _exit(127);
    }
    close(in[0]);
    close(out[1]);
    to_ = in[1];
    from_ = out[0];
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  ~Server() {
    close(to_);
    close(from_);
    waitpid(process_, nullptr, 0);
  }

  void send(const Json& message) const {
    const std::string line = message.dump() + "\n";
    if (write(to_, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
      throw std::runtime_error("write");
  }

  std::string receive() {
    std::size_t end = 0;
    while ((end = buffer_.find('\n', searched_)) == std::string::npos) {
      searched_ = buffer_.size();
      std::array<char, 65536> block;
      const ssize_t got = read(from_, block.data(), block.size());
      if (got <= 0) throw std::runtime_error("the server is gone");
      buffer_.append(block.data(), static_cast<std::size_t>(got));
    }
    std::string line = buffer_.substr(0, end);
    buffer_.erase(0, end + 1);
    searched_ = 0;
    return line;
  }

  Json ask(const std::string& method, const Json& params) {
    send({{"jsonrpc", "2.0"}, {"id", "ask"}, {"method", method}, {"params", params}});
    return Json::parse(receive()).at("result");
  }

  long resident_kib() const {
    std::ifstream status("/proc/" + std::to_string(process_) + "/status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with("VmRSS:")) return std::stol(line.substr(6));
    }
    return 0;
  }
  double cpu_seconds() const {
    std::ifstream stat("/proc/" + std::to_string(process_) + "/stat");
    std::string line;
    std::getline(stat, line);
    std::istringstream fields(line.substr(line.rfind(')') + 1));
    std::string skipped;
    for (int i = 0; i < 11; ++i) fields >> skipped;
    double user = 0;
    double system = 0;
    fields >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
  }

 private:
  pid_t process_ = 0;
  int to_ = -1;
  int from_ = -1;
  std::string buffer_;
  std::size_t searched_ = 0;
};

/// Tasks made of the names of the repository's files, no two alike.
class Tasks {
 public:
  explicit Tasks(const fs::path& repository) {
    std::set<std::string> stems;
    for (auto it = fs::recursive_directory_iterator(repository); it != fs::recursive_directory_iterator();
         ++it) {
      if (it->path().filename() == ".git") it.disable_recursion_pending();
      if (it->is_regular_file()) stems.insert(it->path().stem().string());
    }
    stems_.assign(stems.begin(), stems.end());
  }

  std::string next() {
    static constexpr std::array VERBS = {"Fix", "Extend", "Speed up", "Explain", "Test", "Replace"};
    while (true) {
      std::string task = std::string(VERBS[random_() % VERBS.size()]) + " how " + stem() + " works with " +
                         stem() + " when " + stem() + " fails";
      if (told_.insert(task).second) return task;
    }
  }

 private:
  const std::string& stem() { return stems_[random_() % stems_.size()]; }

  std::vector<std::string> stems_;
  std::set<std::string> told_;
  std::mt19937 random_{20240917};
};

Json call_of(const std::string& task) {
  return {{"name", "context"}, {"arguments", {{"action", "task"}, {"task", task}}}};
}

struct Figures {
  double p50 = 0;
  double p99 = 0;
  double per_second = 0;
};

Figures run(Server& server, Tasks& tasks, int callers, int calls, const char* title) {
  std::vector<Clock::time_point> sent(static_cast<std::size_t>(calls));
  std::vector<double> times;
  int next = 0;
  int errors = 0;
  const auto send = [&] {
    const Json message = {
        {"jsonrpc", "2.0"}, {"id", next}, {"method", "tools/call"}, {"params", call_of(tasks.next())}};
    sent[static_cast<std::size_t>(next++)] = Clock::now();
    server.send(message);
  };
  const long before = server.resident_kib();
  const double cpu_before = server.cpu_seconds();
  const std::clock_t client_before = std::clock();
  const auto start = Clock::now();
  while (next < std::min(callers, calls)) send();
  while (static_cast<int>(times.size()) < calls) {
    const std::string line = server.receive();
    const auto id = std::stoul(line.substr(line.find("\"id\":") + 5, 12));
    times.push_back(milliseconds(Clock::now() - sent[id]));
    if (line.rfind("\"isError\":false") == std::string::npos) ++errors;
    if (next < calls) send();
  }
  const double seconds = milliseconds(Clock::now() - start) / 1000;
  std::sort(times.begin(), times.end());
  const Figures figures = {times[times.size() / 2], times[times.size() * 99 / 100], calls / seconds};
  std::printf("%s: %d calls, %d errors, p50 %.1f ms, p99 %.1f ms (%.1f x p50), %.0f calls/s\n", title, calls,
              errors, figures.p50, figures.p99, figures.p99 / figures.p50, figures.per_second);
  std::printf("  CPU: server %.1f s, client %.1f s of %.1f s; server's memory %ld -> %ld MiB\n",
              server.cpu_seconds() - cpu_before,
              static_cast<double>(std::clock() - client_before) / CLOCKS_PER_SEC, seconds, before / 1024,
              server.resident_kib() / 1024);
  return figures;
}

void initialize(Server& server) {
  server.ask("initialize", {{"protocolVersion", "2025-11-25"},
                            {"capabilities", Json::object()},
                            {"clientInfo", {{"name", "load"}, {"version", "1"}}}});
}

Json content(const Json& result) {
  return Json::parse(result.at("content").at(0).at("text").get<std::string>());
}

void measure(const char* program, const char* repository, int calls) {
  Tasks tasks(repository);
  const auto start = Clock::now();
  Server server(program, repository);
  initialize(server);
  const Json first = content(server.ask("tools/call", call_of(tasks.next())));
  std::printf("first answer, repository never seen: %.1f ms after the start (index at %d %%)\n",
              milliseconds(Clock::now() - start), first.at("progress").get<int>());
  const Json status = {{"name", "context"}, {"arguments", {{"action", "status"}}}};
  Json answer;
  do {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    answer = content(server.ask("tools/call", status)).at("repositories").at(0);
  } while (answer.at("indexing_in_progress").get<bool>());
  std::int64_t files = 0;
  for (const Json& language : answer.at("languages")) files += language.at("files").get<std::int64_t>();
  std::printf("indexed: %ld files in %.1f s\n", static_cast<long>(files),
              milliseconds(Clock::now() - start) / 1000);
  std::this_thread::sleep_for(std::chrono::seconds(10));  // the history is read behind the files
  run(server, tasks, 1, 200, "warm-up");
  const Figures one = run(server, tasks, 1, calls / 10, "one caller");
  const Figures eight = run(server, tasks, 8, calls, "eight callers");
  std::printf("throughput of eight callers: %.2f x that of one\n", eight.per_second / one.per_second);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: %s PROGRAM REPOSITORY [CALLS]\n", argv[0]);
    return 2;
  }
  std::string cache = (fs::temp_directory_path() / "tarnwick-load-XXXXXX").string();
  if (mkdtemp(cache.data()) == nullptr) return 1;
  setenv("XDG_CACHE_HOME", cache.c_str(), 1);
  int status = 0;
  try {
    measure(argv[1], argv[2], argc > 3 ? std::stoi(argv[3]) : 10000);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    status = 1;
  }
  fs::remove_all(cache);
  return status;
}
