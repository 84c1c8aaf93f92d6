#include "quorvane/platform/linux/TrashInfo.h"
#include "tests/platform/TrashHome.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <functional>

#include <sys/mount.h>
#include <unistd.h>

namespace quorvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Another volume, mounted in the home; at its top a folder "project" with an item.
class TrashOnVolumeTests : public TrashHome {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only the administrator can mount";
    home_.makeFolders("volume");
    if (::mount("quorvane-test", volume().c_str(), "tmpfs", 0, "size=1m,mode=755") != 0)
      GTEST_SKIP() << "this system does not let us mount";
    home_.write("volume/project/item name", "content");
  }
  void TearDown() override { ::umount2(volume().c_str(), MNT_DETACH); }

  std::string volume() const { return home_.at("volume").bytes; }
  std::string user() const { return std::to_string(::geteuid()); }
  FilePath item() const { return home_.at("volume/project/item name"); }

  std::string receiveItem(TrashFolder& trash) {
    const auto folder = openFolderBelow(*fileSystem_, home_.descriptor(), "volume/project").value();
    return trash.receive(folder.number(), "item name", {item(), deletedAt_, someMove}).value();
  }
};

TEST_F(TrashOnVolumeTests, eachVolumeHasItsOwnTrashAndNothingIsCopied) {
  const auto trash = folderFor(item()).value();
  EXPECT_EQ(trash->directory(), home_.at("volume/.Trash-" + user() + "/files"));
  EXPECT_FALSE(home_.holds("data/Trash"));
  receiveItem(*trash);
  const std::string own = "volume/.Trash-" + user() + "/";
  EXPECT_EQ(home_.read(own + "info/item name.trashinfo"), trashInfoText("project/item name", deletedAt_, someMove));
  EXPECT_EQ(permissionsOf(home_.at(own)), 0700u);

  home_.write("work/here", "");
  EXPECT_EQ(trash->receive(work().number(), "here", noteFor("here")).error().code, EXDEV);
  EXPECT_TRUE(home_.holds("work/here"));
  EXPECT_THAT(namesIn(home_.at(own + "info")), ElementsAre("item name.trashinfo"));

  const std::string environmentWithVolume = environment() + "TRASH_VOLUMES=" + volume() + " TZ=UTC ";
  EXPECT_THAT(outputOf(environmentWithVolume + "trash-list"), HasSubstr("2026-11-21 10:00:00 " + item().bytes + "\n"));
}

TEST_F(TrashOnVolumeTests, aRecordedTrashTellsPathsLikeTheOneThatWasFound) {
  for (const bool isShared : {false, true}) {
    if (isShared) home_.makeFolders("volume/.Trash"), setPermissions(home_.at("volume/.Trash"), 01777);
    const FilePath directory = folderFor(item()).value()->directory();
    EXPECT_EQ(directory, home_.at((isShared ? "volume/.Trash/" : "volume/.Trash-") + user() + "/files"));
    const auto trash = makeSystemTrash(*fileSystem_, random_, folders());
    ASSERT_TRUE(trash->open(directory).value()->ensureNote("x", {item(), deletedAt_, someMove}));
    const std::string text =
        home_.read(joined(parentOf(directory), "info/x.trashinfo").bytes.substr(home_.path().bytes.size() + 1));
    EXPECT_EQ(trashInfoFromText(text)->path, "project/item name");
  }
  const auto trash = makeSystemTrash(*fileSystem_, random_, folders());
  const FilePath shared = home_.at("volume/.Trash/" + user() + "/files");
  setPermissions(home_.at("volume/.Trash"), 0777);
  EXPECT_EQ(trash->open(shared).error().code, EXDEV);
  ASSERT_EQ(::umount2(volume().c_str(), MNT_DETACH), 0);
  EXPECT_EQ(trash->open(shared).error().code, ENOENT);
}

TEST_F(TrashOnVolumeTests, aSharedTrashIsUsedOnlyWhenNobodyElseCanTouchOurs) {
  const std::string own = "volume/.Trash-" + user() + "/files", shared = "volume/.Trash/" + user() + "/files";
  struct Case {
    const char* what;
    std::function<void()> make;
    std::string directory;
  };
  const auto share = [&](mode_t mode) {
    home_.makeFolders("volume/.Trash"), setPermissions(home_.at("volume/.Trash"), mode);
  };
  const std::string inShared = "volume/.Trash/" + user();
  const Case cases[] = {
      {"sticky", [&] { share(01777); }, shared},
      {"not sticky", [&] { share(0777); }, own},
      {"a link", [&] { home_.makeLink("volume/.Trash", "real"), home_.makeFolders("volume/real"); }, own},
      {"a file", [&] { home_.write("volume/.Trash", ""); }, own},
      {"ours is a link", [&] { share(01777), home_.makeLink(inShared, home_.path().bytes); }, own},
      {"ours is foreign",
       [&] {
         share(01777), home_.makeFolders(inShared);
         require(::chown(home_.at(inShared).bytes.c_str(), 12345, 0) == 0, "chown");
       },
       own},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.what);
    for (const char* name : {".Trash", "real"}) std::filesystem::remove_all(home_.at("volume").bytes + "/" + name);
    std::filesystem::remove_all(home_.at("volume/.Trash-" + user()).bytes);
    each.make();
    EXPECT_EQ(folderFor(item()).value()->directory(), home_.at(each.directory));
  }
}

TEST_F(TrashOnVolumeTests, withoutATrashThatCanBeTrustedNothingGoes) {
  const FilePath own = home_.at("volume/.Trash-" + user());
  home_.makeFolders("volume/elsewhere");
  home_.makeLink("volume/.Trash-" + user(), "elsewhere");
  EXPECT_EQ(folderFor(item()).error().code, EXDEV);
  EXPECT_THAT(namesIn(home_.at("volume/elsewhere")), IsEmpty());

  std::filesystem::remove(own.bytes);
  home_.makeFolders("volume/.Trash-" + user());
  setPermissions(own, 0700);
  ASSERT_EQ(::chown(own.bytes.c_str(), 12345, 0), 0);
  EXPECT_EQ(folderFor(item()).error().code, EXDEV);
  EXPECT_THAT(namesIn(own), IsEmpty());

  std::filesystem::remove(own.bytes);
  ASSERT_EQ(::mount("none", volume().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
  EXPECT_EQ(folderFor(item()).error().code, EXDEV);
}

TEST_F(TrashOnVolumeTests, theHomeTrashOnAnotherVolumeIsNeitherUsedNorMade) {
  ApplicationFolders elsewhere = folders();
  elsewhere.data = home_.at("volume/data/deep");
  elsewhere.isConfined = true;
  const auto trash = makeSystemTrash(*fileSystem_, random_, elsewhere);
  EXPECT_EQ(trash->folderFor(home_.at("work/x")).error().code, EXDEV);
  EXPECT_FALSE(home_.holds("volume/data"));
  EXPECT_EQ(trash->folderFor(item()).value()->directory(), home_.at("volume/data/deep/Trash/files"));
}

}  // namespace
}  // namespace quorvane
