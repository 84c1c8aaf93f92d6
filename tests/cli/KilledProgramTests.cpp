// The program itself, killed or interrupted while it cleans, and on a full disk.

#include "tests/cli/StartedProgram.h"
#include "tests/support/HostileTree.h"
#include "tests/support/ScanHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/mount.h>
#include <unistd.h>

namespace quorvane {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using testing::AnyOf;
using testing::IsEmpty;

/// A home, somewhere in a folder of a test's own, with old logs that are safe to clean; the program is run on it in
/// processes of its own.
class ProgramHome {
 public:
  static constexpr int logCount = 200;

  void makeLogs(const std::string& home = "home") {
    home_ = home;
    for (int i = 0; i < logCount; ++i) scan_.write(logs() + "/run-" + std::to_string(i) + ".log", std::to_string(i));
    scan_.age(home, 24h * 90);
  }

  StartedProgram start(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"--home", scan_.at(home_).bytes});
    return StartedProgram(std::move(arguments));
  }

  int run(const std::vector<std::string>& arguments) const { return start(arguments).wait(); }

  /// What there is of the logs; not of their folder, which they leave and come back to.
  TreeListing listing() const {
    TreeListing logsNow = listingOf(scan_.at(logs()));
    logsNow.erase("");
    return logsNow;
  }

  std::vector<std::string> inPlace() const { return scan_.folder.names(logs()); }
  std::vector<std::string> trashed() const { return scan_.folder.names(home_ + "/.local/share/Trash/files"); }
  std::vector<std::string> notes() const { return scan_.folder.names(home_ + "/.local/share/Trash/info"); }
  std::string at(const std::string& relative) const { return scan_.at(relative).bytes; }
  const TempFolder& folder() const { return scan_.folder; }

  /// The program may have ended anywhere: its history is readable, and one command puts all of it back.
  void expectAllComesBack(const TreeListing& before) const {
    EXPECT_EQ(inPlace().size() + trashed().size(), static_cast<std::size_t>(logCount));
    EXPECT_EQ(run({"history"}), 0);
    EXPECT_EQ(notes().size(), trashed().size()) << "looking at the history settles what was left";
    const bool nothingMoved = trashed().empty();
    EXPECT_EQ(run({"undo"}), nothingMoved ? 2 : 0);
    EXPECT_EQ(listing(), before);
    EXPECT_THAT(trashed(), IsEmpty());
    EXPECT_THAT(notes(), IsEmpty());
  }

  /// Sends a signal to a clean after ever longer times, `rounds` times, until past the time that a whole one takes. How
  /// each ended.
  std::vector<int> cleanAndSignal(int signal, int rounds) {
    makeLogs();
    const TreeListing before = listing();
    const auto begin = steady_clock::now();
    EXPECT_EQ(run({"clean", "--yes"}), 0);
    const auto whole = steady_clock::now() - begin;
    EXPECT_THAT(inPlace(), IsEmpty());
    expectAllComesBack(before);
    std::vector<int> endings;
    for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
      SCOPED_TRACE(round);
      const StartedProgram cleaning = start({"clean", "--yes"});
      std::this_thread::sleep_for(whole * round / rounds);
      cleaning.send(signal);
      endings.push_back(cleaning.wait());
      expectAllComesBack(before);
    }
    return endings;
  }

 private:
  std::string logs() const { return home_ + "/.npm/_logs"; }

  ScanHome scan_{HomeLayout::linux};
  std::string home_ = "home";
};

TEST(KilledProgramTests, whatAKilledCleanMovedComesBack) {
  const auto endings = ProgramHome().cleanAndSignal(SIGKILL, 25);
  EXPECT_THAT(endings, testing::Each(AnyOf(0, 1000 + SIGKILL)));
  EXPECT_THAT(endings, testing::Contains(1000 + SIGKILL));
}

TEST(KilledProgramTests, anInterruptedCleanEndsInOrder) {
  const auto endings = ProgramHome().cleanAndSignal(SIGINT, 10);
  // Right after its start the program is not yet ready to be interrupted, and simply ends.
  EXPECT_THAT(endings, testing::Each(AnyOf(0, 130, 1000 + SIGINT)));
  EXPECT_THAT(endings, testing::Contains(130));
}

TEST(KilledProgramTests, aFullDiskLosesNothing) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the administrator can mount";
  ProgramHome home;
  home.folder().makeFolders("small");
  if (::mount("none", home.at("small").c_str(), "tmpfs", 0, "size=4m,mode=700") != 0)
    GTEST_SKIP() << "this system does not let us mount";
  home.makeLogs("small/home");
  const TreeListing before = home.listing();
  for (const int freeBlocks : {0, 1, 2, 5, 20, 100}) {
    SCOPED_TRACE(freeBlocks);
    const FileDescriptor filler(
        ::open(home.at("small/filler").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    const std::string block(4096, 'f');
    off_t size = 0;
    while (::write(filler.number(), block.data(), block.size()) > 0) size += 4096;
    ASSERT_EQ(::ftruncate(filler.number(), size - freeBlocks * 4096), 0);
    EXPECT_THAT(home.run({"clean", "--yes"}), AnyOf(1, 3));
    EXPECT_EQ(home.inPlace().size() + home.trashed().size(), before.size());
    ASSERT_EQ(::unlink(home.at("small/filler").c_str()), 0);
    ASSERT_EQ(::ftruncate(filler.number(), 0), 0);
    home.expectAllComesBack(before);
  }
  EXPECT_EQ(home.run({"clean", "--yes"}), 0);
  EXPECT_THAT(home.inPlace(), IsEmpty());
  home.expectAllComesBack(before);
  EXPECT_EQ(::umount2(home.at("small").c_str(), MNT_DETACH), 0);
}

}  // namespace
}  // namespace quorvane
