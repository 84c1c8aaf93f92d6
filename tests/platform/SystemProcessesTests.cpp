#include "quorvane/platform/SystemProcesses.h"

#include "quorvane/platform/BusiestProcesses.h"
#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/platform/linux/LinuxProcesses.h"
#include "quorvane/platform/posix/PsProcesses.h"
#include "tests/support/ManualClock.h"
#include "tests/support/SystemTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <random>

#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

std::string statText(int pid, const std::string& name, int user, int system, int start, int pages) {
  return std::to_string(pid) + " (" + name + ") S 1 1 1 0 -1 4194560 1 0 0 0 " + std::to_string(user) + " " +
         std::to_string(system) + " 0 0 20 0 1 0 " + std::to_string(start) + " 99999 " + std::to_string(pages) +
         " 18446744073709551615 1 1 0\n";
}

/// A /proc of made processes, and a clock that moves by hand.
class ProcessListingTests : public testing::Test {
 protected:
  struct Process {
    int pid;
    std::string name;
    int ticks;
    int pages;
    int start = 5;
  };

  void show(const Process& process) const {
    tree_.set(std::to_string(process.pid) + "/stat",
              statText(process.pid, process.name, process.ticks / 2, process.ticks - process.ticks / 2, process.start,
                       process.pages));
  }
  std::vector<SystemProcessSample> after(milliseconds time, std::size_t most = 10) {
    clock_.advanceUptime(time);
    return processes_.busiest(most, StopToken()).value();
  }

  const SystemTree tree_{{{"uptime", "1 1\n"}, {"self/stat", "x"}}};
  ManualClock clock_{Date()};
  LinuxProcesses processes_{tree_.root(), {.ticksPerSecond = 100, .pageBytes = 4096}, clock_};
};

TEST_F(ProcessListingTests, tellsTheLoadSinceTheCallBefore) {
  show({10, "idle", 50, 100});
  show({20, "busy", 50, 10});
  EXPECT_EQ(after(milliseconds(0))[0], (SystemProcessSample{10, "idle", {}, 0, 409600})) << "no load is known yet";

  show({20, "busy", 350, 20});
  show({30, "new", 25, 1, 900});
  const std::vector<SystemProcessSample> samples = after(milliseconds(2000));
  ASSERT_EQ(samples.size(), 3U);
  EXPECT_EQ(samples[0], (SystemProcessSample{20, "busy", {}, 150, 81920})) << "one and a half processors";
  EXPECT_EQ(samples[1], (SystemProcessSample{30, "new", {}, 12.5, 4096}));
  EXPECT_EQ(samples[2].cpuPercent, 0);

  show({20, "again", 40, 20, 1000});
  show({30, "new", 5, 1, 900});
  const std::vector<SystemProcessSample> later = after(milliseconds(1000));
  EXPECT_EQ(later[0], (SystemProcessSample{20, "again", {}, 40, 81920})) << "another process got the number";
  EXPECT_EQ(later[1].cpuPercent, 0) << "a counter that went down";
  show({20, "again", 41, 20, 1000});
  EXPECT_EQ(after(milliseconds(0))[0].cpuPercent, 1000) << "no time at all counts as a millisecond";
}

TEST_F(ProcessListingTests, countsNoLifetimeAsLoadWhereOneReadingFailed) {
  show({10, "idle", 50, 100});
  show({20, "old", 90'000, 10});
  after(milliseconds(0));
  tree_.set("20/stat", "damaged");
  EXPECT_EQ(after(milliseconds(1000)).size(), 1U);
  show({20, "old", 90'010, 10});
  EXPECT_EQ(after(milliseconds(1000))[0].pid, 10) << "nothing is known of its load";
  show({20, "old", 90'030, 10});
  EXPECT_EQ(after(milliseconds(1000))[0], (SystemProcessSample{20, "old", {}, 20, 40960}));
}

TEST_F(ProcessListingTests, listsTheBusiestThenTheLargest) {
  for (int i = 1; i <= 40; ++i) show({i, "p" + std::to_string(i), 0, i});
  after(milliseconds(0));
  for (const int busy : {3, 39, 7}) show({busy, "p" + std::to_string(busy), busy * 10, busy});
  std::vector<int> pids;
  for (const SystemProcessSample& sample : after(milliseconds(1000), 3)) pids.push_back(sample.pid);
  EXPECT_THAT(pids, ElementsAre(39, 7, 3, 40, 38)) << "39 is among the three largest, but listed already";
}

TEST_F(ProcessListingTests, readsNamesThatAreMeantToConfuse) {
  const std::string names[] = {"a b", "a) R 5", "(", ") S 1 1 1 0 -1 0 0 0 0 0 7 7", "x\ny", "", "\xff\x1b[2J"};
  int pid = 1;
  for (const std::string& name : names) show({pid++, name, 2, 3});
  std::vector<std::string> found;
  for (const SystemProcessSample& sample : after(milliseconds(0))) {
    found.push_back(sample.name);
    EXPECT_EQ(sample.memoryBytes, 3 * 4096) << sample.name;
  }
  std::ranges::sort(found);
  std::vector<std::string> wanted(std::begin(names), std::end(names));
  std::ranges::sort(wanted);
  EXPECT_EQ(found, wanted);
}

TEST_F(ProcessListingTests, passesOverWhatItCannotRead) {
  show({10, "good", 1, 1});
  for (const char* bad :
       {"", "11", "11 (x", "11 (x) S 1 2 3", "11 (x) S 1 1 1 0 -1 0 0 0 0 0 -5 5 0 0 0 0 0 0 5 9 9\n"}) {
    tree_.set("11/stat", bad);
    EXPECT_EQ(after(milliseconds(10)).size(), 1U) << bad;
  }
  tree_.set("12/stat", std::string(std::size_t{1} << 20, '1'));
  ::mkdir(tree_.at("13").bytes.c_str(), 0700);
  ASSERT_EQ(::mkfifo(tree_.at("13/stat").bytes.c_str(), 0600), 0);
  EXPECT_EQ(after(milliseconds(10)).size(), 1U) << "a pipe is not waited for";
}

TEST_F(ProcessListingTests, tellsTheExecutableAndTheNameInFull) {
  show({10, "gnome-terminal-", 1, 1});
  ASSERT_EQ(::symlink("/usr/libexec/gnome-terminal-server (deleted)", tree_.at("10/exe").bytes.c_str()), 0);
  const SystemProcessSample sample = after(milliseconds(0)).at(0);
  EXPECT_EQ(sample.name, "gnome-terminal-server");
  EXPECT_EQ(sample.executablePath, FilePath{"/usr/libexec/gnome-terminal-server"});
}

TEST_F(ProcessListingTests, failsWhereThereIsNoProcess) {
  EXPECT_EQ(processes_.busiest(10, StopToken()).error().code, ENODATA);
  EXPECT_EQ(LinuxProcesses({"/nonexistent"}, {}, clock_).busiest(10, StopToken()).error().code, ENOENT);
  show({10, "p", 1, 1});
  StopSource stop;
  stop.requestStop();
  EXPECT_TRUE(processes_.busiest(10, stop.token()).error().isCancelled());
}

TEST(LinuxProcessesTests, missesAProcessOnceItEnded) {
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (;;) ::pause();
  }
  // Its number goes on being listed there, as if another process had it.
  const SystemTree tree({});
  const std::string folder = "/proc/" + std::to_string(child);
  ASSERT_EQ(::symlink(folder.c_str(), tree.at(std::to_string(child)).bytes.c_str()), 0);
  const auto openFiles = [&] {
    return std::ranges::count_if(std::filesystem::directory_iterator("/proc/self/fd"), [&](const auto& each) {
      std::error_code error;
      return std::filesystem::read_symlink(each.path(), error) == folder + "/stat";
    });
  };
  const SystemClock clock;
  LinuxProcesses processes(tree.root(), ProcessUnits::ofThisSystem(), clock);
  EXPECT_EQ(processes.busiest(1, StopToken())->size(), 1U);
  EXPECT_EQ(openFiles(), 1);
  EXPECT_EQ(processes.busiest(1, StopToken())->size(), 1U);
  EXPECT_EQ(openFiles(), 1) << "the one that stayed open";
  ::kill(child, SIGKILL);
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
  EXPECT_EQ(processes.busiest(1, StopToken()).error().code, ENODATA);
  EXPECT_EQ(openFiles(), 0);
}

TEST(BusiestProcessesTests, agreeWithAPlainSort) {
  std::mt19937 chance(7);
  struct Each {
    int number, load, memory;
    bool operator==(const Each&) const = default;
  };
  for (int round = 0; round < 300; ++round) {
    std::vector<Each> all;
    for (int i = 0, count = static_cast<int>(chance() % 30); i < count; ++i)
      all.push_back({i, static_cast<int>(chance() % 5), static_cast<int>(chance() % 5)});
    const std::size_t most = chance() % 12;
    const auto isBusier = [](const Each& a, const Each& b) {
      return std::pair(-a.load, a.number) < std::pair(-b.load, b.number);
    };
    const auto isLarger = [](const Each& a, const Each& b) {
      return std::pair(-a.memory, a.number) < std::pair(-b.memory, b.number);
    };

    std::vector<Each> wanted = all, byMemory = all;
    std::ranges::sort(wanted, isBusier);
    std::ranges::sort(byMemory, isLarger);
    wanted.resize(std::min(most, wanted.size()));
    byMemory.resize(std::min(most, byMemory.size()));
    for (const Each& large : byMemory)
      if (std::ranges::find(wanted, large) == wanted.end()) wanted.push_back(large);

    keepBusiest(all, most, isBusier, isLarger);
    EXPECT_EQ(all, wanted) << round;
  }
}

/// A ps that is only its output.
class MadeRunner final : public ProcessRunner {
 public:
  explicit MadeRunner(Outcome<SafeProcessResult, PosixError> result) : result_(std::move(result)) {}
  Outcome<SafeProcessResult, PosixError> run(const ProcessRequest&, StopToken) override {
    ++runCount;
    return result_;
  }

  int runCount = 0;

 private:
  const Outcome<SafeProcessResult, PosixError> result_;
};

TEST(PsProcessesTests, readsItsColumns) {
  const auto samples = processesFromPs(
      "    1  0.5  2048 /usr/lib/systemd/systemd\n"
      "   77 12.0     0 kworker/0:1 odd name \n"
      "PID %CPU RSS COMMAND\n  5 nan 5 x\n 6 -1 5 x\n 7 1 -5 x\n 8 1 99999999999999999999 x\n -9 1 1 x\n 10 1 1\n\n 11 "
      "0,5 1 x\n"
      "   12  1.0  1 cut off");
  ASSERT_TRUE(samples.has_value());
  EXPECT_THAT(*samples, ElementsAre(SystemProcessSample{1, "systemd", {"/usr/lib/systemd/systemd"}, 0.5, 2'097'152},
                                    SystemProcessSample{77, "kworker/0:1 odd name", {}, 12, 0}));
  for (const char* foreign : {"", "\n", "PID TTY TIME CMD\n 1 ? 00:00 init\n", "1 1 1 x"})
    EXPECT_EQ(processesFromPs(foreign), std::nullopt) << foreign;
}

TEST(PsProcessesTests, failsAsAWhole) {
  SafeProcessResult late, flooding, broken, foreign;
  late.standardOutput = flooding.standardOutput = broken.standardOutput = "1 1 1 x\n";
  late.didTimeOut = true;
  flooding.droppedOutputBytes = 1;
  broken.exitCode = 1;
  foreign.standardOutput = "no such option\n";
  const struct {
    Outcome<SafeProcessResult, PosixError> result;
    int code, runCount;  ///< of three calls: two at once, one when the pause is over
  } cases[] = {{late, ETIMEDOUT, 2},
               {flooding, EFBIG, 2},
               {broken, EIO, 3},
               {foreign, EBADMSG, 3},
               {failure(PosixError{ENOENT}), ENOENT, 3}};
  for (const auto& [result, code, runCount] : cases) {
    MadeRunner runner(result);
    ManualClock clock{Date()};
    PsProcesses ps(clock, runner, {});
    for (const int seconds : {0, 29, 1}) {
      clock.advanceUptime(std::chrono::seconds(seconds));
      EXPECT_EQ(ps.busiest(5, StopToken()).error().code, code);
    }
    EXPECT_EQ(runner.runCount, runCount) << code << ": what takes its time is not paid again at once";
  }
}

TEST(PsProcessesTests, costsAtMostItsTimeWhereItHangsOrFloods) {
  const SystemTree tree({{"hang", "#!/bin/sh\ntrap '' TERM\nsleep 60\n"}, {"flood", "#!/bin/sh\nexec yes\n"}});
  SafeProcessRunner runner;
  const SystemClock clock;
  for (const char* name : {"hang", "flood"}) {
    ::chmod(tree.at(name).bytes.c_str(), 0700);
    const auto begin = std::chrono::steady_clock::now();
    PsProcesses ps(clock, runner, {.program = tree.at(name), .timeLimit = milliseconds(200), .outputLimit = 1 << 16});
    EXPECT_FALSE(ps.busiest(5, StopToken())) << name;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10)) << name;
  }
}

TEST(PsProcessesTests, agreesWithProcOnThisMachine) {
  SafeProcessRunner runner;
  const SystemClock clock;
  PsProcesses ps(clock, runner, {});
  LinuxProcesses nothing({"/nonexistent"}, {}, clock);
  const auto told = FallbackProcesses(nothing, ps).busiest(1'000'000, StopToken());
  const auto read = makeSystemProcesses(clock, runner)->busiest(1'000'000, StopToken());
  ASSERT_TRUE(told.has_value());
  ASSERT_TRUE(read.has_value());
  const auto own = [](const std::vector<SystemProcessSample>& samples) {
    return *std::ranges::find(samples, ::getpid(), &SystemProcessSample::pid);
  };
  EXPECT_EQ(own(*told).name, own(*read).name);
  EXPECT_NEAR(static_cast<double>(own(*told).memoryBytes), static_cast<double>(own(*read).memoryBytes), 16e6);
  EXPECT_TRUE(own(*read).executablePath.bytes.ends_with("platform_tests"));
}

}  // namespace
}  // namespace quorvane
