#include "quorvane/platform/ProcessTable.h"

#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/platform/linux/LinuxProcessTable.h"
#include "quorvane/platform/linux/ProcFiles.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <optional>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {
namespace {

using testing::Contains;
using testing::ElementsAre;

/// A copy of this process that prepares itself, reports, and waits to be ended.
class WaitingChild {
 public:
  template <class Prepare>
  explicit WaitingChild(Prepare prepare) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) std::abort();
    const FileDescriptor ready(ends[0]);
    FileDescriptor report(ends[1]);
    number_ = ::fork();
    if (number_ == 0) {
      prepare();
      report.close();
      for (;;) ::pause();
    }
    report.close();
    char none = 0;
    while (::read(ready.number(), &none, 1) > 0) continue;
  }
  ~WaitingChild() {
    ::kill(number_, SIGKILL);
    ::waitpid(number_, nullptr, 0);
  }
  WaitingChild(const WaitingChild&) = delete;
  WaitingChild& operator=(const WaitingChild&) = delete;

  pid_t number() const { return number_; }

 private:
  pid_t number_ = -1;
};

std::optional<RunningProcess> find(const std::vector<RunningProcess>& processes, pid_t number) {
  const auto found = std::ranges::find(processes, number, &RunningProcess::identifier);
  return found == processes.end() ? std::nullopt : std::optional(*found);
}

std::optional<RunningProcess> findNow(pid_t number) { return find(makeSystemProcessTable()->read().value(), number); }

TEST(ProcessTableTests, keepsAChildWhosePlacesAreTooLongToTell) {
  TempFolder temp;
  temp.write("open", "x");
  temp.makeFolders("deep");
  const std::string name(250, 'd');
  const auto standDeep = [&] {
    if (::chdir(temp.at("deep").bytes.c_str()) != 0) std::abort();
    for (int i = 0; i < 20; ++i) {
      ::mkdir(name.c_str(), 0700);
      if (::chdir(name.c_str()) != 0) std::abort();
    }
  };
  const WaitingChild standing([&] {
    ::open(temp.at("open").bytes.c_str(), O_RDONLY);
    standDeep();
  });
  const WaitingChild holding([&] {
    standDeep();
    ::open("file", O_RDWR | O_CREAT, 0600);
    if (::chdir("/") != 0) std::abort();
  });
  const auto stands = findNow(standing.number()), holds = findNow(holding.number());
  ASSERT_TRUE(stands && holds);
  EXPECT_FALSE(stands->isInspectable);
  EXPECT_THAT(stands->openPaths, Contains(temp.at("open")));
  EXPECT_FALSE(holds->isInspectable);
  EXPECT_EQ(holds->workingFolder, FilePath{"/"});
}

TEST(ProcessTableTests, seesWhatAChildHolds) {
  TempFolder temp;
  temp.write("open", "x");
  temp.write("mapped", std::string(4096, 'm'));
  temp.makeFolders("standing in");
  temp.makeFolders("folder");
  const WaitingChild child([&] {
    if (::chdir(temp.at("standing in").bytes.c_str()) != 0) std::abort();
    ::open(temp.at("open").bytes.c_str(), O_RDONLY);
    ::open(temp.at("folder").bytes.c_str(), O_RDONLY | O_DIRECTORY);
    const int file = ::open(temp.at("mapped").bytes.c_str(), O_RDONLY);
    if (::mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE, file, 0) == MAP_FAILED) std::abort();
    ::close(file);
  });
  const auto process = findNow(child.number());
  ASSERT_TRUE(process);
  EXPECT_TRUE(process->isInspectable);
  EXPECT_EQ(process->owner, ::getuid());
  EXPECT_EQ(process->program, "platform_tests");
  EXPECT_EQ(process->workingFolder, temp.at("standing in"));
  for (const char* name : {"open", "mapped", "folder"}) EXPECT_THAT(process->openPaths, Contains(temp.at(name)));
  EXPECT_EQ(std::ranges::adjacent_find(process->openPaths), process->openPaths.end());
}

TEST(ProcessTableTests, leavesOutItselfAndTheEnded) {
  EXPECT_FALSE(findNow(::getpid()));
  const pid_t ended = ::fork();
  if (ended == 0) ::_exit(0);
  siginfo_t info{};
  ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(ended), &info, WEXITED | WNOWAIT), 0);
  EXPECT_FALSE(findNow(ended));
  ::waitpid(ended, nullptr, 0);
}

TEST(ProcessTableTests, aProcessThatMayNotBeLookedIntoIsStillSeen) {
  constexpr uid_t other = 12345;
  if (::geteuid() != 0) GTEST_SKIP() << "only the administrator can become another user";
  const auto becomeOther = [] {
    if (::setresgid(other, other, other) != 0 || ::setresuid(other, other, other) != 0) std::abort();
  };
  const WaitingChild hidden([&] {
    becomeOther();
    ::prctl(PR_SET_DUMPABLE, 0);
  });
  // The table is read by that user too, who reports through the exit code.
  const pid_t reader = ::fork();
  if (reader == 0) {
    becomeOther();
    const auto processes = makeSystemProcessTable()->read();
    if (!processes) ::_exit(1);
    const auto process = find(*processes, hidden.number());
    if (!process) ::_exit(2);
    if (process->isInspectable || !process->openPaths.empty() || !process->workingFolder.bytes.empty()) ::_exit(3);
    if (process->program != "platform_tests" || process->owner != other) ::_exit(4);
    if (std::ranges::any_of(*processes, [](const RunningProcess& each) { return each.owner != other; })) ::_exit(5);
    ::_exit(0);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(reader, &status, 0), reader);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(ProcessTableTests, readsAMadeTree) {
  TempFolder temp;
  const auto make = [&](const std::string& number, const std::string& user) {
    temp.write(number + "/status", "Name:\tx\nState:\tS (sleeping)\nUid:\t" + user + "\t0\t0\t0\n");
    temp.write(number + "/comm", "comm name\n");
    temp.write(number + "/maps",
               "1-2 r-xp 0 fd:00 9   /lib/one\n2-3 rw-p 0 fd:00 9   /lib/one\n4-5 rw-p 0 0:0 0 [heap]\n");
    temp.makeLink(number + "/cwd", "/some place");
    temp.makeLink(number + "/exe", "/opt/app/pro gram (deleted)");
    temp.makeLink(number + "/fd/0", "socket:[1]");
    temp.makeLink(number + "/fd/7", "/data/file");
  };
  const auto makeAll = [&](const std::string& number, const std::string& user) {
    temp.makeFolders(number + "/fd");
    make(number, user);
  };
  makeAll("100", "1000");
  makeAll("101", "1001");
  makeAll("102", "1000");
  makeAll("not a number", "1000");
  temp.makeFolders("103");  // one that ends just now
  const auto read = [&](std::uint32_t user) {
    return LinuxProcessTable({.root = temp.path(), .user = user, .ownNumber = 102}).read().value();
  };
  const auto processes = read(1000);
  ASSERT_EQ(processes.size(), 1u);
  EXPECT_EQ(processes[0].identifier, 100);
  EXPECT_EQ(processes[0].program, "pro gram");
  EXPECT_EQ(processes[0].workingFolder.bytes, "/some place");
  EXPECT_THAT(processes[0].openPaths,
              ElementsAre(FilePath{"/data/file"}, FilePath{"/lib/one"}, FilePath{"/opt/app/pro gram (deleted)"}));
  EXPECT_EQ(read(0).size(), 2u);
}

TEST(ProcFilesTests, readsTheStatusOfAnyProgramName) {
  const auto status = [](std::string_view text) { return processStatusFromText(text); };
  EXPECT_EQ(status("Name:\tUid: 7\nState:\tR (running)\nUid:\t4294967294\t1\t1\t1\n"),
            (ProcessStatus{4'294'967'294u, false}));
  EXPECT_EQ(status("State:\tZ (zombie)\nUid:\t5\t1\t1\t1"), (ProcessStatus{5, true}));
  for (const char* damaged : {"", "State:\tR\n", "Uid:\t5\n", "State:\tR\nUid:\t-1\n", "State:\tR\nUid:\n",
                              "State:\tR\nUid:\t99999999999\n", "State:\nUid:\t5\n"})
    EXPECT_FALSE(status(damaged)) << damaged;
}

TEST(ProcFilesTests, readsMappedPathsWithSpacesAndNewlines) {
  std::vector<FilePath> paths;
  addMappedPaths(
      "7f-80 r--p 00000000 fd:00 123                        /a b/c  d\n"
      "80-81 r--p 00000000 fd:00 123                        /a b/c  d\n"
      "81-82 rw-p 00000000 00:00 0 \n"
      "82-83 rw-p 00000000 00:00 0                          [stack]\n"
      "83-84 r--p 00000000 fd:00 124                        /new\\012line\n"
      "84-85 r--p",
      paths);
  EXPECT_THAT(paths, ElementsAre(FilePath{"/a b/c  d"}, FilePath{"/new\nline"}));
}

TEST(ProcFilesTests, onlyPlainNumbersAreProcesses) {
  EXPECT_EQ(processNumberFromName("1"), 1);
  for (const char* name : {"", "0", "-1", "+1", "1x", " 1", "self", "99999999999"})
    EXPECT_FALSE(processNumberFromName(name)) << name;
}

}  // namespace
}  // namespace quorvane
