// The road of a removal while others are at work: whatever they put in the place of something, and whoever removes at
// the same time.

#include "tests/removal/RoadScene.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {
namespace {

/// Something that is put in the place of something else, which is set aside; and taken back.
struct Swap {
  std::string path;
  std::string target;  ///< of the link in its place; none for a new folder there
};

/// What is swapped at one moment, for items that have nothing to do with each other.
const std::vector<Swap> swaps[] = {
    // A file and the folder around another by links to what is precious, a folder by another one.
    {{".cache/file", "precious/folder/a/b"}, {".cache/folder", ""}, {"logs", "precious"}},
    // A folder, and one inside of an item, by links to precious ones.
    {{"logs/old.log", "precious/folder"}, {".cache/folder/a", "precious/folder/a"}},
    {{".local/share/Trash/files", "precious/folder"}},
};

class SwapScene {
 public:
  explicit SwapScene(const std::vector<Swap>& all) : swaps_(all) {
    for (const std::string& item : RoadScene::items()) reviewed_.insert(inodeOf(item));
  }

  /// Both names change in one step, so that whoever looks meanwhile never finds the place empty and fills it. What has
  /// gone to the Trash already leaves its place to whoever comes.
  void swap() {
    for (std::size_t i = 0; i < swaps_.size(); ++i) {
      if (swaps_[i].target.empty()) {
        std::filesystem::create_directories(aside(i) / "new");
      } else {
        std::filesystem::create_symlink(path(swaps_[i].target), aside(i));
      }
      if (exchange(i)) continue;
      std::error_code isGone;
      std::filesystem::rename(aside(i), path(swaps_[i].path), isGone);
    }
  }

  void takeBack() {
    for (std::size_t i = 0; i < swaps_.size(); ++i) {
      if (isOther(path(swaps_[i].path)) && !exchange(i)) std::filesystem::remove_all(path(swaps_[i].path));
      if (isOther(aside(i))) std::filesystem::remove_all(aside(i));
    }
  }

  void expectOnlyReviewedTrashed() {
    for (const std::string& name : scene_.trashed())
      EXPECT_TRUE(reviewed_.contains(inodeOf(".local/share/Trash/files/" + name))) << name;
  }

  RoadScene& scene() { return scene_; }

 private:
  std::filesystem::path aside(std::size_t number) { return path("aside " + std::to_string(number)); }

  static bool isOther(const std::filesystem::path& place) {
    return std::filesystem::is_symlink(place) || std::filesystem::exists(place / "new");
  }

  /// False when either is not there.
  bool exchange(std::size_t number) {
    const std::string place = path(swaps_[number].path);
    return ::renameat2(AT_FDCWD, aside(number).c_str(), AT_FDCWD, place.c_str(), RENAME_EXCHANGE) == 0;
  }

  std::filesystem::path path(const std::string& relative) { return scene_.home().at(relative).bytes; }

  std::uint64_t inodeOf(const std::string& relative) {
    return readIdentity(*scene_.home().realFileSystem, scene_.home().at(relative)).value().inode;
  }

  RoadScene scene_;
  std::vector<Swap> swaps_;
  std::set<std::uint64_t> reviewed_;
};

class SwapTests : public testing::TestWithParam<std::vector<Swap>> {};

TEST_P(SwapTests, nothingElseIsMovedWhateverIsSwapped) {
  std::size_t call = 1;
  for (bool isReached = true; isReached; ++call) {
    SCOPED_TRACE(testing::Message() << GetParam().front().path << " before call " << call);
    SwapScene swapScene(GetParam());
    RoadScene& scene = swapScene.scene();
    const std::size_t before = scene.files().calls();
    scene.files().beforeCall(before + call, [&] { swapScene.swap(); });
    (void)scene.remove();
    isReached = scene.files().calls() - before >= call;
    scene.files().beforeCall(before + call, {});
    scene.expectPreciousUntouched();
    swapScene.takeBack();
    swapScene.expectOnlyReviewedTrashed();
    scene.expectNothingIsLost();
    scene.expectTrueRecords();
    if (call % 8 != 0) continue;  // it takes its time
    ASSERT_TRUE(scene.restore());
    swapScene.takeBack();  // what was inside of an item is back only now
    scene.expectAllInPlace();
  }
  EXPECT_GT(call, 100U);
}

INSTANTIATE_TEST_SUITE_P(EveryCall, SwapTests, testing::ValuesIn(swaps));

/// Changes of a tree's content count until the tree was measured; what is written later goes along, and nothing is
/// lost.
TEST(RoadTests, aTreeThatIsWrittenToIsRefusedOrGoesAlongWhole) {
  std::size_t call = 1, refused = 0;
  for (bool isReached = true; isReached; ++call) {
    SCOPED_TRACE(call);
    RoadScene scene;
    const std::size_t before = scene.files().calls();
    // Another thread may move it at the same moment, so it need not be there.
    scene.files().beforeCall(before + call, [path = scene.home().at(".cache/folder/a/b").bytes] {
      std::fstream(path, std::ios::in | std::ios::out | std::ios::trunc) << "written meanwhile";
    });
    const auto report = scene.remove();
    isReached = scene.files().calls() - before >= call;
    scene.files().beforeCall(before + call, {});
    scene.expectTrueReport(report);
    const bool isRefused = scene.home().holds(".cache/folder");
    if (isRefused) ++refused;
    scene.expectNothingIsLost();
    scene.expectTrueRecords();
    const char* const left = isRefused ? ".cache/folder/a/b" : ".local/share/Trash/files/folder/a/b";
    EXPECT_THAT(scene.home().folder.read(left), testing::AnyOf("folder", "written meanwhile"));
  }
  EXPECT_GT(refused, 10U);
  EXPECT_LT(refused, call);
}

/// Removes these in a process of its own, as often as another run holds the lock.
pid_t startedCleaner(CleaningHome& home, const std::vector<RemovalRequest>& requests) {
  home.endWalkerThreads();
  const pid_t child = ::fork();
  if (child != 0) return child;
  for (int attempt = 0; attempt < 1000; ++attempt) {
    const auto report = home.remover.remove(requests, {}, {});
    if (report) ::_exit(0);
    const auto* error = std::get_if<RecoveryStoreError>(&report.error());
    if (error == nullptr || error->fault != RecoveryStoreFault::busy) ::_exit(1);
    ::usleep(2000);
  }
  ::_exit(2);
}

TEST(RoadTests, runsAtTheSameTimeTakeTurnsAndTakeEachItemOnce) {
  for (int round = 0; round < 5; ++round) {
    CleaningHome home;
    std::vector<std::string> names;
    for (int i = 0; i < 90; ++i) names.push_back("caches/" + std::to_string(i));
    for (const std::string& name : names) home.write(name + "/file", name);
    std::vector<pid_t> cleaners;
    for (const int first : {0, 10, 20}) {
      const auto begin = names.begin() + first;
      cleaners.push_back(startedCleaner(home, home.requests({begin, begin + 70})));
    }
    for (const pid_t cleaner : cleaners) {
      int status = 0;
      ASSERT_EQ(::waitpid(cleaner, &status, 0), cleaner);
      EXPECT_TRUE(WIFEXITED(status)) << status;
      EXPECT_EQ(WEXITSTATUS(status), 0);
    }
    const auto view = home.history.load();
    ASSERT_TRUE(view);
    EXPECT_EQ(view->pendingCount, 0);
    std::multiset<std::string> moved;
    std::vector<RecoveryReference> references;
    for (const CleaningHistoryEntry& entry : view->entries) {
      if (!isInTrash(entry.items[0])) continue;
      moved.insert(std::string(relativeTo(home.folder.path(), entry.items[0].originalPath)));
      references.push_back({entry.id, entry.items[0].id});
    }
    EXPECT_EQ(moved, (std::multiset<std::string>(names.begin(), names.end()))) << "each once";
    EXPECT_EQ(home.folder.names(".local/share/Trash/files").size(), names.size());
    EXPECT_EQ(home.history.restore(references, {})->result.restoredCount, std::ssize(names));
    for (const std::string& name : names) EXPECT_EQ(home.folder.read(name + "/file"), name);
  }
}

}  // namespace
}  // namespace quorvane
