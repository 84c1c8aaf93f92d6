// Compares what one look at the machine costs with the programs that people leave open for it.
//
//   StatusBenchmark PROGRAM [ROUNDS]     PROGRAM is quorvane
//   StatusBenchmark --sample             samples without processes every second and prints a line of each, for the
//   above
//
// Each program runs once in each round, with a second between its samples. Once it has settled, what the clocks of its
// processes gain in ten seconds is shared among the samples of that time; starting up is not in it. Programs that draw
// on a terminal are given one; 400 sleeping processes are there for those that list processes. Children that come and
// go within that time are not counted; none of these programs has any. A ratio is taken within each round, and its
// median over the rounds is judged. Ends with 1 when a bound was missed or could not be measured; a rival that is not
// installed is named.

#include "quorvane/health/SystemStatusService.h"
#include "quorvane/platform/FileDescriptor.h"
#include "quorvane/platform/SystemPlatform.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

using namespace quorvane;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds settling{2500};  // half a second off the samples
constexpr std::chrono::seconds measuring{10};

struct Program {
  std::string name;
  std::vector<std::string> command;
  bool drawsOnTerminal = false;
  int secondsOfSample = 1;
};

struct Cost {
  double cpuMs = 0;  ///< of one sample
  double memoryMiB = 0;
};

/// What each process of a group took so far, with all its threads.
std::map<pid_t, double> cpuMsOf(pid_t group) {
  std::map<pid_t, double> times;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    pid_t pid = 0;
    clockid_t clock{};
    timespec time{};
    if (std::from_chars(name.data(), name.data() + name.size(), pid).ec != std::errc() || ::getpgid(pid) != group ||
        ::clock_getcpuclockid(pid, &clock) != 0 || ::clock_gettime(clock, &time) != 0)
      continue;
    times[pid] = static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
  }
  return times;
}

FileDescriptor openTerminal(std::string& name) {
  FileDescriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (!terminal.isOpen() || ::grantpt(terminal.number()) != 0 || ::unlockpt(terminal.number()) != 0) return {};
  const winsize size{.ws_row = 40, .ws_col = 120, .ws_xpixel = 0, .ws_ypixel = 0};
  ::ioctl(terminal.number(), TIOCSWINSZ, &size);
  name = ::ptsname(terminal.number());  // NOLINT(concurrency-mt-unsafe): one thread
  return terminal;
}

[[noreturn]] void become(const Program& program, const std::string& terminal) {
  ::setsid();
  const int channel = ::open(terminal.c_str(), O_RDWR);  // the first one that a session opens is its terminal
  const int nothing = ::open("/dev/null", O_RDWR);
  ::dup2(program.drawsOnTerminal ? channel : nothing, 0);
  ::dup2(program.drawsOnTerminal ? channel : nothing, 1);
  ::dup2(nothing, 2);
  ::setenv("TERM", "xterm-256color", 1);  // NOLINT(concurrency-mt-unsafe): one thread
  ::setenv("LC_ALL", "C.UTF-8", 1);       // NOLINT(concurrency-mt-unsafe)
  std::vector<char*> words;
  words.reserve(program.command.size() + 1);
  for (const std::string& word : program.command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  ::execvp(words[0], words.data());
  ::_exit(127);
}

/// Reads away what is drawn, until then.
void drain(int terminal, Clock::time_point end) {
  std::vector<char> bytes(65536);
  for (auto now = Clock::now(); now < end; now = Clock::now()) {
    pollfd waiting{terminal, POLLIN, 0};
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - now).count() + 1;
    if (::poll(&waiting, 1, static_cast<int>(left)) > 0 && ::read(terminal, bytes.data(), bytes.size()) <= 0) return;
  }
}

/// Nothing when the program ended by itself.
std::optional<Cost> costOfSample(const Program& program) {
  std::string name;
  const FileDescriptor terminal = openTerminal(name);
  if (!terminal.isOpen()) return std::nullopt;
  const auto begin = Clock::now();
  const pid_t child = ::fork();
  if (child < 0) return std::nullopt;
  if (child == 0) become(program, name);
  drain(terminal.number(), begin + settling);
  const auto before = cpuMsOf(child);
  const auto settled = Clock::now();
  drain(terminal.number(), begin + settling + measuring);
  auto gained = cpuMsOf(child);
  const double seconds = std::chrono::duration<double>(Clock::now() - settled).count();
  for (const auto& [pid, time] : before)
    if (const auto still = gained.find(pid); still != gained.end()) still->second -= time;

  const bool isThere = ::waitpid(child, nullptr, WNOHANG) == 0;
  ::kill(-child, SIGTERM);
  drain(terminal.number(), Clock::now() + std::chrono::milliseconds(300));
  ::kill(-child, SIGKILL);
  Cost cost;
  rusage usage{};
  while (::wait4(-child, nullptr, 0, &usage) > 0)  // those that it left behind come to us
    cost.memoryMiB = std::max(cost.memoryMiB, static_cast<double>(usage.ru_maxrss) / 1024);
  for (const auto& [pid, time] : gained) cost.cpuMs += time / seconds * program.secondsOfSample;
  return isThere ? std::optional(cost) : std::nullopt;
}

template <class Value>
double median(std::vector<Value> values) {
  std::ranges::sort(values);
  return values.empty() ? 0 : values[values.size() / 2];
}

struct Row {
  Program program;
  std::vector<std::optional<Cost>> costs = {};  // of each round

  bool hasRun() const {
    return !costs.empty() && std::ranges::all_of(costs, [](const auto& cost) { return cost && cost->cpuMs > 0; });
  }
  double cpuMs() const {
    std::vector<double> values;
    for (const auto& cost : costs)
      if (cost) values.push_back(cost->cpuMs);
    return median(values);
  }
  double memoryMiB() const {
    double most = 0;
    for (const auto& cost : costs)
      if (cost) most = std::max(most, cost->memoryMiB);
    return most;
  }
};

bool isInstalled(const std::string& program) {
  return std::system(fmt::format("command -v {} >/dev/null 2>&1", program).c_str()) == 0;  // NOLINT
}

void measure(std::vector<Row>& rows, int rounds) {
  const std::string own = rows.back().program.name;
  std::erase_if(rows, [&](const Row& row) {
    const bool isMissing = row.program.name != own && !isInstalled(row.program.command[0]);
    if (isMissing) fmt::print("{} is missing, so nothing is compared with it\n", row.program.name);
    return isMissing;
  });
  for (int round = 0; round < rounds; ++round)
    for (Row& row : rows) row.costs.push_back(costOfSample(row.program));
  for (const Row& row : rows)
    fmt::print("  {:<30} {:>9.3f} ms {:>8.1f} MiB{}\n", row.program.name, row.cpuMs(), row.memoryMiB(),
               row.hasRun() ? "" : "  did not run each time");
}

/// Whether the last row holds the bound beside the cheapest of those before it that may be compared with.
bool judge(const std::vector<Row>& rows, std::string_view onlyWith, double bound) {
  const Row& own = rows.back();
  const Row* rival = nullptr;
  for (const Row& row : rows)
    if (&row != &own && (onlyWith.empty() || row.program.name == onlyWith) &&
        (rival == nullptr || !row.hasRun() || row.cpuMs() < rival->cpuMs()))
      rival = &row;
  if (rival == nullptr || !rival->hasRun() || !own.hasRun()) {
    fmt::print("  {}: nothing to judge\n", own.program.name);
    return rival == nullptr && own.hasRun();
  }
  std::vector<double> ratios;
  for (std::size_t i = 0; i < own.costs.size(); ++i)
    ratios.push_back(own.costs[i].value().cpuMs / rival->costs[i].value().cpuMs);
  const double ratio = median(ratios);
  fmt::print("  {}: {:.2f} x {}, at most {}: {}\n", own.program.name, ratio, rival->program.name, bound,
             ratio <= bound ? "ok" : "MISSED");
  return ratio <= bound;
}

int sampleForEver() {
  SystemClock clock;
  SafeProcessRunner runner;
  const auto counters = makeSystemCounters();
  const auto sensors = makeSystemSensors();
  const auto processes = makeSystemProcesses(clock, runner);
  const auto volumes = makeSystemVolumes();
  SystemStatusService service({*counters, *sensors, *processes, *volumes, clock});
  for (;;) {
    const SystemStatusSnapshot snapshot = service.sample({.withProcesses = false});
    std::printf("%3ld %3ld %3ld %9ld %9ld\n", std::lround(snapshot.cpuPercent), std::lround(memoryPercent(snapshot)),
                std::lround(diskUsedPercent(snapshot)), std::lround(snapshot.networkDownloadBytesPerSecond),
                std::lround(snapshot.networkUploadBytesPerSecond));
    std::fflush(stdout);
    ::sleep(1);
  }
}

std::vector<pid_t> sleepers(int count) {
  std::vector<pid_t> all;
  for (int i = 0; i < count; ++i) {
    const pid_t child = ::fork();
    if (child == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      for (;;) ::pause();
    }
    if (child > 0) all.push_back(child);
  }
  return all;
}

}  // namespace

int main(int count, char** words) {
  if (count == 2 && std::string_view(words[1]) == "--sample") return sampleForEver();
  if (count < 2) return 2;
  const std::string quorvane = words[1];
  const int rounds = count > 2 ? std::max(1, std::atoi(words[2])) : 3;  // NOLINT(cert-err34-c): 1 for nonsense
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);

  fmt::print("one sample without processes; {} rounds; processor time, peak of memory\n", rounds);
  std::vector<Row> plain{{{"vmstat 1", {"vmstat", "1"}}},
                         {{"sar -u -r -n DEV 1", {"sar", "-u", "-r", "-n", "DEV", "1"}}},
                         {{"quorvane's sample", {words[0], "--sample"}}}};
  measure(plain, rounds);
  bool isHeld = judge(plain, "", 1.0);

  fmt::print("\none sample with more than 400 processes; {} rounds\n", rounds);
  const std::vector<pid_t> asleep = sleepers(400);
  std::vector<Row> tables{{{"top -b -d 1", {"top", "-b", "-d", "1"}}},
                          {{"top -d 1", {"top", "-d", "1"}, true}},
                          {{"htop -d 10", {"htop", "-d", "10"}, true}},
                          {{"btop, at its pace of 2 s", {"btop"}, true, 2}},
                          {{"glances -t 1", {"glances", "-t", "1"}, true}},
                          {{"quorvane status --watch", {quorvane, "status", "--watch", "--interval", "1"}, true}}};
  measure(tables, rounds);
  isHeld &= judge(tables, "top -b -d 1", 0.6);
  const double memory = tables.back().memoryMiB();
  constexpr double mostMemory = 12;
  fmt::print("  its memory: {:.1f} MiB, at most {}: {}\n", memory, mostMemory, memory <= mostMemory ? "ok" : "MISSED");
  isHeld &= memory <= mostMemory;
  for (const pid_t each : asleep) ::kill(each, SIGKILL);
  for (const pid_t each : asleep) ::waitpid(each, nullptr, 0);
  return isHeld ? 0 : 1;
}
