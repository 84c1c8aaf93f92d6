// Items on a volume of its own, which may be gone when it is wanted.

#include "tests/support/CleaningHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include <signal.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {
namespace {

using testing::IsEmpty;

bool succeeds(const std::string& command) {
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;  // NOLINT(concurrency-mt-unsafe): one thread
}

class OtherVolumeTests : public testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only the administrator can mount";
    home_.write("image", "");
    std::filesystem::resize_file(home_.at("image").bytes, 8 << 20);
    if (!succeeds("PATH=$PATH:/usr/sbin:/sbin mkfs.ext4 -q -F '" + home_.at("image").bytes + "'") || !mount("volume"))
      GTEST_SKIP() << "this system does not let us mount";
    home_.write("volume/project/item/file", "far");
    home_.write(".cache/near", "near");
  }
  void TearDown() override {
    if (!mounted_.empty()) unmount();
  }

  bool mount(const std::string& relative) {
    home_.folder.makeFolders(relative);
    if (!succeeds("mount -o loop '" + home_.at("image").bytes + "' '" + home_.at(relative).bytes + "'")) return false;
    mounted_ = relative;
    home_.madeVolumes.made = std::vector{home_.at(relative)};
    return true;
  }
  void unmount() {
    ASSERT_EQ(::umount2(home_.at(mounted_).bytes.c_str(), 0), 0);
    mounted_.clear();
    home_.madeVolumes.made = std::vector<FilePath>{};
  }

  HistoryStore newStore() { return {home_.moves, home_.random, home_.settings.folders.applicationSupport}; }
  HistoryView loaded() { return newStore().load().value(); }
  RecoveryBatchResult restored(const std::vector<CleaningHistoryEntry>& entries) {
    std::vector<RecoveryReference> references;
    for (const CleaningHistoryEntry& entry : entries) references.push_back({entry.id, entry.items[0].id});
    return newStore().restore(references, {}).value().result;
  }

  /// Does it in a process that is killed before it writes the history for the second time: when all was moved.
  void killWhenMoved(const std::function<void()>& work) {
    home_.endWalkerThreads();
    const pid_t child = ::fork();
    if (child == 0) {
      home_.fileSystem.countOnly({FileCall::renameReplacing});
      home_.fileSystem.beforeCall(home_.fileSystem.calls() + 2, [] { ::kill(::getpid(), SIGKILL); });
      work();
      ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
  }

  CleaningHome home_;
  std::string mounted_;
};

TEST_F(OtherVolumeTests, eachItemGoesToTheTrashOfItsVolumeAndComesBack) {
  const RemovalReport report = home_.remove(home_.requests({"volume/project/item", ".cache/near"}));
  ASSERT_EQ(report.movedCount, 2);
  EXPECT_EQ(report.entries[0].items[0].trashedPath, home_.at("volume/.Trash-0/files/item"));
  EXPECT_EQ(report.entries[1].items[0].trashedPath, home_.at(".local/share/Trash/files/near"));
  EXPECT_EQ(restored(report.entries).restoredCount, 2);
  EXPECT_EQ(home_.folder.read("volume/project/item/file"), "far");
  EXPECT_EQ(home_.folder.read(".cache/near"), "near");
  EXPECT_THAT(home_.folder.names("volume/.Trash-0/info"), IsEmpty());
}

TEST_F(OtherVolumeTests, anItemWaitsInTheTrashOfAVolumeThatIsGone) {
  const RemovalReport report = home_.remove(home_.requests({"volume/project/item"}));
  ASSERT_EQ(report.movedCount, 1);
  unmount();
  EXPECT_TRUE(isInTrash(loaded().entries[0].items[0]));
  const RecoveryBatchResult missed = restored(report.entries);
  EXPECT_EQ(missed.failedCount, 1);
  EXPECT_EQ(missed.entries[0].items[0].restoreFailure, RecoveryFailure::other);
  EXPECT_TRUE(isInTrash(missed.entries[0].items[0]));
  EXPECT_THAT(home_.folder.names("volume"), IsEmpty()) << "nothing is made in its place";
  ASSERT_TRUE(mount("volume"));
  EXPECT_EQ(restored(report.entries).restoredCount, 1);
  EXPECT_EQ(home_.folder.read("volume/project/item/file"), "far");
}

TEST_F(OtherVolumeTests, whatIsPendingOnAVolumeThatIsGoneStaysPending) {
  const auto requests = home_.requests({"volume/project/item"});
  killWhenMoved([&] { (void)home_.remove(requests); });
  unmount();
  HistoryView view = loaded();
  EXPECT_EQ(view.pendingCount, 1);
  ASSERT_TRUE(mount("volume"));
  view = loaded();
  EXPECT_EQ(view.pendingCount, 0);
  ASSERT_TRUE(isInTrash(view.entries[0].items[0]));

  killWhenMoved([&] { (void)restored(view.entries); });
  unmount();
  EXPECT_EQ(loaded().pendingCount, 1);
  ASSERT_TRUE(mount("volume"));
  view = loaded();
  EXPECT_EQ(view.pendingCount, 0);
  EXPECT_EQ(view.entries[0].items[0].restoredPath, home_.at("volume/project/item"));
  EXPECT_EQ(home_.folder.read("volume/project/item/file"), "far");
}

TEST_F(OtherVolumeTests, nothingIsCopiedToAHomeTrashOnAnotherVolume) {
  unmount();
  ASSERT_TRUE(mount(".local/share"));
  const auto requests = home_.requests({".cache/near"});
  const RemovalReport report = home_.remove(requests);
  EXPECT_EQ(report.movedCount, 0);
  ASSERT_EQ(report.failures.size(), 1U);
  EXPECT_EQ(report.failures[0].refusal, refusalOf(FileProtectionError::invalidRestore));
  EXPECT_EQ(home_.folder.read(".cache/near"), "near");
  EXPECT_THAT(home_.recorded(), IsEmpty());
}

}  // namespace
}  // namespace quorvane
