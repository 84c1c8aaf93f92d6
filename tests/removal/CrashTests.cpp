// What is left when a process dies, or the disk fails, at any point of a clean or a restore: every item is in its place
// or in the Trash with a true record, the history loads, and everything can be put back.

#include "tests/support/RemovalHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {
namespace {

using testing::IsEmpty;

const std::vector<std::string> items{"cache/folder", "cache/file", "logs/old.log"};

/// Everything that changes the file system.
const std::vector<FileCall> changingCalls{FileCall::makeFolder,  FileCall::createFile,      FileCall::write,
                                          FileCall::synchronise, FileCall::renameReplacing, FileCall::renameExclusive,
                                          FileCall::removeFile,  FileCall::lockFile};

/// One home in which something is to go wrong.
class Scene {
 public:
  Scene() {
    home_.folder().write("cache/folder/a/b", "folder");
    home_.folder().write("cache/file", "file");
    home_.folder().write("logs/old.log", "log");
    home_.folder().write("precious", "precious");
  }

  RemovalHome& home() { return home_; }

  /// Moves all items in one transaction; false as soon as anything is refused.
  bool clean() {
    const auto store = home_.newStore();
    auto history = store->open();
    if (!history) return false;
    std::vector<CleanupMoveJournal::Request> requests;
    for (const std::string& item : items) requests.push_back(home_.request(item));
    auto transaction =
        CleanupMoveJournal(home_.services())
            .begin(*history, std::move(requests), CleaningHistorySource::files, store->dateOfNewRun(**history));
    if (!transaction) return false;
    bool isWhole = true;
    for (std::size_t i = 0; i < items.size(); ++i) isWhole = !transaction->perform(i) && isWhole;
    return transaction->finish() && isWhole;
  }

  bool restore() {
    const auto view = home_.newStore()->load();
    if (!view) return false;
    std::vector<RecoveryReference> references;
    for (const CleaningHistoryEntry& entry : view->entries)
      if (isInTrash(entry.items.front())) references.push_back({entry.id, entry.items.front().id});
    const auto result = home_.newStore()->restore(references, {});
    return result && result->failedCount == 0;
  }

  /// Holds at every instant, also before anything was settled.
  void expectNothingIsLost() {
    for (const std::string& item : items) {
      const std::string leaf(leafOf({item}));
      const bool isInPlace = home_.folder().holds(item), isTrashed = home_.folder().holds("data/Trash/files/" + leaf);
      EXPECT_NE(isInPlace, isTrashed) << item;
    }
    EXPECT_EQ(home_.folder().read("precious"), "precious");
  }

  /// Holds once the next start has settled what was left.
  void expectTrueRecords() {
    const auto view = home_.newStore()->load();
    ASSERT_TRUE(view) << caseName(view.error().fault);
    EXPECT_EQ(view->pendingCount, 0);
    std::vector<std::string> recordedInTrash, expectedNotes;
    for (const CleaningHistoryEntry& entry : view->entries) {
      const CleaningHistoryItem& item = entry.items.front();
      if (!isInTrash(item)) continue;
      recordedInTrash.emplace_back(leafOf(*item.trashedPath));
      EXPECT_EQ(entry.itemCount, 1);
      EXPECT_EQ(readIdentity(home_.realFiles(), *item.trashedPath).value(), *item.trashIdentity);
    }
    std::ranges::sort(recordedInTrash);
    for (const std::string& leaf : recordedInTrash) expectedNotes.push_back(leaf + ".trashinfo");
    EXPECT_EQ(home_.trashed(), recordedInTrash);
    EXPECT_EQ(home_.notes(), expectedNotes);
    ASSERT_TRUE(home_.newStore()->open());
    for (const auto& entry : std::filesystem::directory_iterator(home_.at("data/Quorvane").bytes))
      EXPECT_FALSE(entry.path().filename().string().contains(".writing-")) << entry.path();
  }

  void expectAllInPlace() {
    EXPECT_EQ(home_.folder().read("cache/folder/a/b"), "folder");
    EXPECT_EQ(home_.folder().read("cache/file"), "file");
    EXPECT_EQ(home_.folder().read("logs/old.log"), "log");
    EXPECT_THAT(home_.trashed(), IsEmpty());
    EXPECT_THAT(home_.notes(), IsEmpty());
  }

 private:
  RemovalHome home_;
};

/// Runs the work in a child that is killed right before its n-th changing call; whether it got that far.
bool isKilledAt(Scene& scene, std::size_t call, const std::function<bool(Scene&)>& work) {
  const pid_t child = ::fork();
  if (child == 0) {
    scene.home().files().countOnly(changingCalls);
    scene.home().files().beforeCall(scene.home().files().calls() + call, [] { ::kill(::getpid(), SIGKILL); });
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
    Scene scene;
    isKilled = isKilledAt(scene, call, [](Scene& each) { return each.clean(); });
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
    Scene scene;
    ASSERT_TRUE(scene.clean());
    isKilled = isKilledAt(scene, call, [](Scene& each) { return each.restore(); });
    scene.expectNothingIsLost();
    scene.expectTrueRecords();
    ASSERT_TRUE(scene.restore());
    scene.expectAllInPlace();
  }
  EXPECT_GT(call, 15U);
}

/// The settling of a killed run is killed too, over and over, until one gets through.
TEST(CrashTests, settlingKilledAtAnyChangeLosesNothing) {
  for (std::size_t call = 5; call < 40; call += 3) {
    SCOPED_TRACE(call);
    Scene scene;
    if (!isKilledAt(scene, call, [](Scene& each) { return each.clean(); })) break;
    for (std::size_t settling = 1;
         isKilledAt(scene, settling, [](Scene& each) { return each.home().newStore()->load().has_value(); });
         ++settling)
      scene.expectNothingIsLost();
    scene.expectTrueRecords();
  }
}

struct Fault {
  FaultSpan span;
  int code;
};

class DiskFaultTests : public testing::TestWithParam<Fault> {};

TEST_P(DiskFaultTests, aCleanOnAFailingDiskLosesNothing) {
  std::size_t count = 0;
  for (std::size_t call = 1; call == 1 || call <= count; ++call) {
    SCOPED_TRACE(call);
    Scene scene;
    FailingFileSystem& files = scene.home().files();
    files.failAt(call, GetParam().span, GetParam().code);
    (void)scene.clean();
    count = std::max(count, files.calls());
    files.failAt(static_cast<std::size_t>(-1));
    scene.expectNothingIsLost();
    scene.expectTrueRecords();
    ASSERT_TRUE(scene.restore());
    scene.expectAllInPlace();
  }
}

TEST_P(DiskFaultTests, aRestoreOnAFailingDiskLosesNothing) {
  std::size_t count = 0;
  for (std::size_t call = 1; call == 1 || call <= count; ++call) {
    SCOPED_TRACE(call);
    Scene scene;
    FailingFileSystem& files = scene.home().files();
    ASSERT_TRUE(scene.clean());
    const std::size_t before = files.calls();
    files.failAt(before + call, GetParam().span, GetParam().code);
    (void)scene.restore();
    count = std::max(count, files.calls() - before);
    files.failAt(static_cast<std::size_t>(-1));
    scene.expectNothingIsLost();
    scene.expectTrueRecords();
    ASSERT_TRUE(scene.restore());
    scene.expectAllInPlace();
  }
}

INSTANTIATE_TEST_SUITE_P(EveryCall, DiskFaultTests,
                         testing::Values(Fault{FaultSpan::once, EIO}, Fault{FaultSpan::once, ENOSPC},
                                         Fault{FaultSpan::once, EINTR}, Fault{FaultSpan::fromThereOn, EIO},
                                         Fault{FaultSpan::fromThereOn, ENOSPC}));

}  // namespace
}  // namespace quorvane
