// What is left when a process dies, or the disk fails, at any point of a clean or a restore: every item is in its place
// or in the Trash with a true record, the history loads, and everything can be put back.

#include "tests/removal/RoadScene.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {
namespace {

/// Everything that changes the file system.
const std::vector<FileCall> changingCalls{FileCall::makeFolder,  FileCall::createFile,      FileCall::write,
                                          FileCall::synchronise, FileCall::renameReplacing, FileCall::renameExclusive,
                                          FileCall::removeFile,  FileCall::lockFile};

/// Runs the work in a child that is killed right before its n-th changing call; whether it got that far.
bool isKilledAt(RoadScene& scene, std::size_t call, const std::function<bool(RoadScene&)>& work) {
  scene.home().endWalkerThreads();
  const pid_t child = ::fork();
  if (child == 0) {
    scene.files().countOnly(changingCalls);
    scene.files().beforeCall(scene.files().calls() + call, [] { ::kill(::getpid(), SIGKILL); });
    ::_exit(work(scene) ? 0 : 1);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
  return WIFSIGNALED(status);
}

TEST(CrashTests, aCleanKilledAtAnyChangeLosesNothing) {
  std::size_t call = 1;
  for (bool isKilled = true; isKilled; ++call) {
    SCOPED_TRACE(call);
    RoadScene scene;
    isKilled = isKilledAt(scene, call, [](RoadScene& each) { return each.clean(); });
    scene.expectNothingIsLost();
    scene.expectTrueRecords();
    ASSERT_TRUE(scene.restore());
    scene.expectTrueRecords();
    scene.expectAllInPlace();
  }
  EXPECT_GT(call, 30U);
}

TEST(CrashTests, aRestoreKilledAtAnyChangeLosesNothing) {
  std::size_t call = 1;
  for (bool isKilled = true; isKilled; ++call) {
    SCOPED_TRACE(call);
    RoadScene scene;
    ASSERT_TRUE(scene.clean());
    isKilled = isKilledAt(scene, call, [](RoadScene& each) { return each.restore(); });
    scene.expectNothingIsLost();
    scene.expectTrueRecords();
    ASSERT_TRUE(scene.restore());
    scene.expectTrueRecords();
    scene.expectAllInPlace();
  }
  EXPECT_GT(call, 15U);
}

/// The settling of a killed run is killed too, over and over, until one gets through.
TEST(CrashTests, settlingKilledAtAnyChangeLosesNothing) {
  for (std::size_t call = 5; call < 40; call += 3) {
    SCOPED_TRACE(call);
    RoadScene scene;
    if (!isKilledAt(scene, call, [](RoadScene& each) { return each.clean(); })) break;
    for (std::size_t settling = 1;
         isKilledAt(scene, settling, [](RoadScene& each) { return each.newStore().load().has_value(); }); ++settling)
      scene.expectNothingIsLost();
    scene.expectTrueRecords();
  }
}

struct Fault {
  FaultSpan span;
  int code;
  bool isOfChangesOnly;  ///< the disk can still be read
};

class DiskFaultTests : public testing::TestWithParam<Fault> {
 protected:
  /// Does the work over and over, failing one call later each time, until one gets through; each time with what has to
  /// hold afterwards. Threads read at the same time, so the calls need not come in the same order.
  static std::size_t failEachCall(const std::function<void(RoadScene&)>& prepare,
                                  const std::function<void(RoadScene&)>& work, std::size_t strayNotes = 0) {
    for (std::size_t call = 1;; ++call) {
      SCOPED_TRACE(call);
      RoadScene scene;
      prepare(scene);
      FailingFileSystem& files = scene.files();
      if (GetParam().isOfChangesOnly) files.countOnly(changingCalls);
      const std::size_t before = files.calls();
      files.failAt(before + call, GetParam().span, GetParam().code);
      work(scene);
      const bool isReached = files.calls() - before >= call;
      files.failAt(static_cast<std::size_t>(-1));
      scene.expectNothingIsLost();
      scene.expectTrueRecords(strayNotes);
      EXPECT_TRUE(scene.restore());
      scene.expectAllInPlace();
      scene.expectTrueRecords(strayNotes);
      if (!isReached || HasFailure()) return call;
    }
  }
};

TEST_P(DiskFaultTests, aCleanOnAFailingDiskLosesNothing) {
  const auto clean = [](RoadScene& scene) {
    const auto report = scene.remove();
    scene.files().failAt(static_cast<std::size_t>(-1));
    scene.expectTrueReport(report);
  };
  EXPECT_GT(failEachCall([](RoadScene&) {}, clean), 30U);
}

TEST_P(DiskFaultTests, aRestoreOnAFailingDiskLosesNothing) {
  const auto clean = [](RoadScene& scene) { EXPECT_TRUE(scene.clean()); };
  // An item that is back is back, also when its note will not go.
  EXPECT_GT(failEachCall(
                clean, [](RoadScene& scene) { (void)scene.restore(); }, 1),
            15U);
}

INSTANTIATE_TEST_SUITE_P(EveryCall, DiskFaultTests,
                         testing::Values(Fault{FaultSpan::once, EIO, false}, Fault{FaultSpan::once, ENOSPC, true},
                                         Fault{FaultSpan::once, EINTR, true}, Fault{FaultSpan::fromThereOn, EIO, false},
                                         Fault{FaultSpan::fromThereOn, ENOSPC, true}));

}  // namespace
}  // namespace quorvane
