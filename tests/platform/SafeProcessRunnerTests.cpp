#include "quorvane/platform/ProcessRunner.h"
#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::Ge;
using testing::HasSubstr;
using testing::Lt;

ProcessRequest shell(const std::string& script, std::chrono::milliseconds timeLimit = 20s) {
  return {.executable = {"/bin/sh"},
          .arguments = {"-c", script},
          .environment = {{"PATH", "/usr/bin:/bin"}},
          .workingFolder = {},
          .timeLimit = timeLimit};
}

SafeProcessResult resultOf(const ProcessRequest& request, StopToken stop = {}) {
  return SafeProcessRunner().run(request, stop).value();
}

/// The same, and how long it took.
std::pair<SafeProcessResult, std::chrono::duration<double>> timed(const ProcessRequest& request, StopToken stop = {}) {
  const auto start = std::chrono::steady_clock::now();
  SafeProcessResult result = resultOf(request, stop);
  return {std::move(result), std::chrono::steady_clock::now() - start};
}

/// An ended process that nobody has collected yet is not running.
bool isRunning(const std::string& processNumber) {
  std::ifstream file("/proc/" + std::to_string(std::stoi(processNumber)) + "/stat");
  std::string number, name, state;
  return file >> number >> name >> state && state != "Z";
}

/// On a busy machine some time passes between a signal and its effect.
bool endsSoon(const std::string& processNumber) {
  for (int i = 0; i < 100 && isRunning(processNumber); ++i) std::this_thread::sleep_for(20ms);
  return !isRunning(processNumber);
}

std::uint64_t signalsIn(std::string_view status, std::string_view label) {
  const std::size_t at = status.find(label);
  return at == std::string_view::npos ? ~0ull
                                      : std::stoull(std::string(status.substr(at + label.size(), 17)), nullptr, 16);
}

TEST(SafeProcessRunnerTests, passesArgumentsAsTheyAreAndKeepsTheStreamsApart) {
  ProcessRequest request = shell("printf '<%s>' \"$@\"; printf problem >&2; exit 7");
  request.arguments.insert(request.arguments.end(), {"name", "a b", "", "$HOME `id` 'x' \"y\" \\ *", "\xff\n"});
  const SafeProcessResult result = resultOf(request);
  EXPECT_EQ(result.standardOutput, "<a b><><$HOME `id` 'x' \"y\" \\ *><\xff\n>");
  EXPECT_EQ(result.standardError, "problem");
  EXPECT_EQ(result.exitCode, 7);
  EXPECT_FALSE(result.didTimeOut);
  EXPECT_TRUE(result.isOutputComplete);
}

TEST(SafeProcessRunnerTests, saysWhyAProgramCannotBeStarted) {
  TempFolder temp;
  temp.write("notExecutable", "text");
  const auto codeFor = [](ProcessRequest request) { return SafeProcessRunner().run(request, {}).error().code; };
  const auto program = [](const FilePath& path) {
    return ProcessRequest{.executable = path, .arguments = {}, .environment = {}, .workingFolder = {}, .timeLimit = 5s};
  };
  EXPECT_EQ(codeFor(program(temp.at("missing"))), ENOENT);
  EXPECT_EQ(codeFor(program(temp.at("notExecutable"))), EACCES);
  EXPECT_EQ(codeFor(program(temp.path())), EACCES);
  EXPECT_EQ(codeFor(program({"sh"})), EINVAL);
  ProcessRequest request = shell("exit 0");
  request.workingFolder = temp.at("missing");
  EXPECT_EQ(codeFor(request), ENOENT);
  request = shell("exit 0");
  request.arguments.emplace_back("cut\0off", 7);
  EXPECT_EQ(codeFor(request), EINVAL);
  request = shell("exit 0");
  request.environment = {{"A=B", "c"}};
  EXPECT_EQ(codeFor(request), EINVAL);
}

TEST(SafeProcessRunnerTests, aFullPipeDoesNotBlockTheOtherOne) {
  const SafeProcessResult result = resultOf(shell("head -c 5000000 /dev/zero >&2; printf done"));
  EXPECT_EQ(result.standardError.size(), 5'000'000u);
  EXPECT_EQ(result.standardOutput, "done");
}

TEST(SafeProcessRunnerTests, theChildGetsExactlyItsEnvironmentAndFolder) {
  ::setenv("QUORVANE_TEST_LEAK", "1", 1);  // NOLINT(concurrency-mt-unsafe): no other thread runs yet
  ProcessRequest request{
      .executable = {"/usr/bin/env"}, .arguments = {}, .environment = {}, .workingFolder = {}, .timeLimit = 5s};
  EXPECT_EQ(resultOf(request).standardOutput, "");
  request.environment = {{"A", "1=2"}, {"B", ""}};
  EXPECT_EQ(resultOf(request).standardOutput, "A=1=2\nB=\n");
  const TempFolder temp;
  request = shell("pwd -P; kill -9 $$");
  request.workingFolder = temp.path();
  EXPECT_EQ(resultOf(request).standardOutput, temp.path().bytes + "\n");
  EXPECT_EQ(resultOf(request).exitCode, 128 + 9);
}

TEST(SafeProcessRunnerTests, nothingOfThisProcessReachesTheChild) {
  const FileDescriptor inheritable(::open("/dev/null", O_RDONLY));  // without O_CLOEXEC
  ASSERT_GE(inheritable.number(), 3);
  sigset_t blocked, before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &blocked, &before), 0);
  const auto handler = std::signal(SIGHUP, SIG_IGN);
  const SafeProcessResult result =
      resultOf(shell("ls -l /proc/self/fd | sed -n 's/.* \\([0-9]* -> [^:]*\\).*/\\1/p'; cat; grep -E 'SigBlk|SigIgn' "
                     "/proc/self/status"));
  std::signal(SIGHUP, handler);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  const std::string& text = result.standardOutput;
  EXPECT_THAT(text, HasSubstr("0 -> /dev/null\n1 -> pipe\n2 -> pipe\n3 -> /proc/"));  // 3 is ls's own
  EXPECT_THAT(text, Not(HasSubstr("\n4 -> ")));
  constexpr std::uint64_t ordinarySignals = 0x7FFF'FFFF;  // two more are the C library's own
  EXPECT_EQ(signalsIn(text, "SigBlk:"), 0u);
  EXPECT_EQ(signalsIn(text, "SigIgn:") & ordinarySignals, 0u);
}

TEST(SafeProcessRunnerTests, theChildHasNoTerminalAndItsOwnSession) {
  EXPECT_NE(resultOf(shell(": </dev/tty")).exitCode, 0);
  EXPECT_EQ(
      resultOf(shell("read -r _ _ _ _ group session _ </proc/$$/stat; test $group = $$ -a $session = $$")).exitCode, 0);
}

TEST(SafeProcessRunnerTests, theChildHasTheDescriptorLimitOfOldTimes) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  before.rlim_cur = std::min<rlim_t>(before.rlim_max - 1, 512);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  raiseDescriptorLimit();
  rlimit raised{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &raised), 0);
  EXPECT_EQ(raised.rlim_cur, before.rlim_max);
  // The limit is set from outside, a moment after the child was started.
  EXPECT_EQ(resultOf(shell("sleep 0.3; ulimit -n")).standardOutput, std::to_string(before.rlim_cur) + "\n");
}

TEST(SafeProcessRunnerTests, anOverdueChildIsAskedToEndAndWhatItWroteIsKept) {
  const auto [result, seconds] = timed(shell("printf early; exec sleep 30", 200ms));
  EXPECT_TRUE(result.didTimeOut);
  EXPECT_EQ(result.exitCode, 128 + SIGTERM);
  EXPECT_EQ(result.standardOutput, "early");
  EXPECT_THAT(seconds.count(), AllOf(Ge(0.2), Lt(2.5)));
}

TEST(SafeProcessRunnerTests, aChildThatWillNotEndIsMadeTo) {
  const auto [result, seconds] = timed(shell("trap '' TERM; while :; do sleep 0.05; done", 200ms));
  EXPECT_TRUE(result.didTimeOut);
  EXPECT_EQ(result.exitCode, 128 + SIGKILL);
  EXPECT_THAT(seconds.count(), AllOf(Ge(0.7), Lt(2.5)));
}

TEST(SafeProcessRunnerTests, aStoppedChildEndsToo) {
  const auto [result, seconds] = timed(shell("kill -STOP $$", 200ms));
  EXPECT_EQ(result.exitCode, 128 + SIGTERM);
  EXPECT_LT(seconds.count(), 2.5);
}

TEST(SafeProcessRunnerTests, everythingInTheSessionEndsWithTheChild) {
  const SafeProcessResult result = resultOf(shell("sleep 30 & echo $!; wait", 200ms));
  EXPECT_TRUE(result.didTimeOut);
  EXPECT_TRUE(result.isOutputComplete);
  EXPECT_TRUE(endsSoon(result.standardOutput));
}

TEST(SafeProcessRunnerTests, aGrandchildInAnotherSessionCannotHoldTheRun) {
  const auto [result, seconds] = timed(shell("setsid sleep 5 & echo $!; exit 3", 300ms));
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_FALSE(result.didTimeOut);
  EXPECT_FALSE(result.isOutputComplete);
  EXPECT_FALSE(result.standardOutput.empty());
  EXPECT_THAT(seconds.count(), AllOf(Ge(1.3), Lt(2.5)));
  ::kill(std::stoi(result.standardOutput), SIGKILL);
}

TEST(SafeProcessRunnerTests, aGrandchildThatWritesOnIsHeard) {
  const SafeProcessResult result = resultOf(shell("(sleep 0.2; printf late) & exit 0"));
  EXPECT_EQ(result.standardOutput, "late");
  EXPECT_TRUE(result.isOutputComplete);
}

TEST(SafeProcessRunnerTests, whatIsBeyondTheLimitIsCounted) {
  ProcessRequest request = shell("head -c 300000 /dev/zero; head -c 1001 /dev/zero >&2");
  request.outputLimit = 1000;
  const SafeProcessResult result = resultOf(request);
  EXPECT_EQ(result.standardOutput.size(), 1000u);
  EXPECT_EQ(result.droppedOutputBytes, 299'000u);
  EXPECT_EQ(result.standardError.size(), 1000u);
  EXPECT_EQ(result.droppedErrorBytes, 1u);
}

TEST(SafeProcessRunnerTests, aStopRequestEndsTheChildWithoutATimeOut) {
  StopSource source;
  std::thread asker([&] {
    std::this_thread::sleep_for(200ms);
    source.requestStop();
  });
  const auto [result, seconds] = timed(shell("trap '' TERM; sleep 30"), source.token());
  asker.join();
  EXPECT_FALSE(result.didTimeOut);
  EXPECT_GE(result.exitCode, 128);
  EXPECT_LT(seconds.count(), 2.5);
}

TEST(SafeProcessRunnerTests, aShortCommandIsNotHeldUp) {
  // The end of a child that has closed its streams is an event of its own, not found at the next tick.
  double shortest = 10;
  for (int i = 0; i < 10; ++i) shortest = std::min(shortest, timed(shell("exec 1>&- 2>&-; sleep 0.06")).second.count());
  EXPECT_THAT(shortest, AllOf(Ge(0.06), Lt(0.095)));
}

TEST(SafeProcessRunnerTests, leavesNoZombieAndNoDescriptorBehind) {
  const auto openDescriptors = [] {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
  };
  const auto before = openDescriptors();
  for (int i = 0; i < 20; ++i) resultOf(shell("exit 0"));
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

}  // namespace
}  // namespace quorvane
