#include "quorvane/platform/Trash.h"

#include "quorvane/platform/linux/TrashInfo.h"
#include "tests/platform/TrashHome.h"
#include "tests/support/FailingFileSystem.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <functional>

#include <unistd.h>

namespace quorvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class TrashTests : public TrashHome {};

TEST_F(TrashTests, keepsAnItemAndItsNoteForThisUserAlone) {
  home_.makeFolders("work/folder/inner");
  const auto trash = homeTrash();
  EXPECT_EQ(trash->directory(), home_.at("data/Trash/files"));
  EXPECT_EQ(receive(*trash, "folder").value(), "folder");
  EXPECT_EQ(trash->changedFolders(), std::vector{trash->descriptor()});
  EXPECT_FALSE(home_.holds("work/folder"));
  EXPECT_TRUE(home_.holds("data/Trash/files/folder/inner"));
  EXPECT_EQ(home_.read("data/Trash/info/folder.trashinfo"),
            trashInfoText(home_.at("work/folder").bytes, deletedAt_, someMove));
  for (const char* folder : {"data/Trash", "data/Trash/files", "data/Trash/info"})
    EXPECT_EQ(permissionsOf(home_.at(folder)), 0700u);
  EXPECT_EQ(permissionsOf(home_.at("data/Trash/info/folder.trashinfo")), 0600u);

  EXPECT_TRUE(trash->forget("folder"));
  EXPECT_THAT(notes(), IsEmpty());
  EXPECT_TRUE(trash->forget("folder"));
}

TEST_F(TrashTests, anItemCostsThreeCallsAndNoListing) {
  FailingFileSystem counted(*fileSystem_);
  const auto trash = makeSystemTrash(counted, random_, folders())->folderFor(home_.at("work/x")).value();
  const FileDescriptor folder = work();
  home_.write("work/a", ""), home_.write("work/b", "");
  const std::size_t before = counted.calls();
  ASSERT_TRUE(trash->receive(folder.number(), "a", noteFor("a")));
  ASSERT_TRUE(trash->receive(folder.number(), "b", noteFor("b")));
  const std::vector<FileCall> record = counted.record();
  EXPECT_THAT(std::vector<FileCall>(record.begin() + static_cast<std::ptrdiff_t>(before), record.end()),
              ElementsAre(FileCall::createFile, FileCall::write, FileCall::renameExclusive, FileCall::createFile,
                          FileCall::write, FileCall::renameExclusive));
}

TEST_F(TrashTests, namesThatAreTakenAreLeftToWhoHasThem) {
  const auto trash = homeTrash();
  home_.write("data/Trash/info/a.log.trashinfo", "of somebody");
  home_.write("data/Trash/files/a.2.log", "without a note");
  EXPECT_EQ(received(*trash, "a.log"), "a.3.log");
  EXPECT_EQ(received(*trash, "a.log"), "a.4.log");
  EXPECT_EQ(received(*homeTrash(), "a.log"), "a.5.log");
  EXPECT_EQ(home_.read("data/Trash/info/a.log.trashinfo"), "of somebody");
  EXPECT_EQ(home_.read("data/Trash/files/a.2.log"), "without a note");
  EXPECT_FALSE(home_.holds("data/Trash/info/a.2.log.trashinfo"));
  for (int i = 6; i <= 103; ++i) received(*trash, "a.log");
  EXPECT_THAT(notes(), testing::Contains("a." + uuidText(someMove) + "-3.log.trashinfo"));
}

TEST_F(TrashTests, anyNameAndAnyKindOfObjectGoesInAndIsToldExactly) {
  const auto trash = homeTrash();
  for (const std::string& name :
       {std::string("line\nbreak"), std::string("100% \"quoted\" 'name'"), std::string("\xFF\xFE latin"),
        std::string("[Trash Info]"), std::string("-rf"), std::string(255, 'n'), std::string(255, '\x80'),
        std::string(".hidden"), std::string("ends with.trashinfo"), std::string("..."), std::string(" ")}) {
    SCOPED_TRACE(name);
    const std::string leaf = received(*trash, name, name);
    EXPECT_EQ(home_.read("data/Trash/files/" + leaf), name);
    const auto info = trashInfoFromText(home_.read("data/Trash/info/" + leaf + ".trashinfo"));
    ASSERT_TRUE(info);
    EXPECT_EQ(info->path, home_.at("work/" + name).bytes);
    EXPECT_EQ(info->move, someMove);
  }
  home_.makeLink("work/link", "/nowhere");
  ASSERT_EQ(::mkfifo(home_.at("work/pipe").bytes.c_str(), 0600), 0);
  EXPECT_TRUE(receive(*trash, "link"));
  EXPECT_TRUE(receive(*trash, "pipe"));
  EXPECT_EQ(receive(*trash, "missing").error().code, ENOENT);
  EXPECT_EQ(receive(*trash, "..").error().code, EINVAL);
  EXPECT_EQ(notes().size(), items().size());
}

TEST_F(TrashTests, everyFailingStepLeavesTheItemInOnePlaceAndNoNoteWithoutIt) {
  deletedAt_ = std::chrono::system_clock::now();
  const auto run = [&](FailingFileSystem& fileSystem, bool isNameTaken) -> Outcome<std::string, PosixError> {
    const auto trash = makeSystemTrash(fileSystem, random_, folders())->folderFor(home_.at("work/x"));
    if (trash && isNameTaken) home_.write("data/Trash/files/item", "taken");
    if (!trash) return failure(trash.error());
    return (*trash)->receive(work().number(), "item", noteFor("item"));
  };
  for (const bool isNameTaken : {false, true}) {
    FailingFileSystem counted(*fileSystem_);
    home_.write("work/item", "content");
    ASSERT_TRUE(run(counted, isNameTaken));
    const std::vector<FileCall> record = counted.record();
    const auto removal = std::ranges::find(record, FileCall::removeFile);
    const std::size_t lastRemoval =
        static_cast<std::size_t>(removal - record.begin()) + 1;  // of the note of a taken name
    for (std::size_t step = 1; step <= counted.calls(); ++step) {
      for (const FaultSpan span : {FaultSpan::once, FaultSpan::fromThereOn}) {
        SCOPED_TRACE(testing::Message() << "step " << step << ", span " << static_cast<int>(span));
        std::filesystem::remove_all(home_.at("data/Trash").bytes);
        home_.write("work/item", "content");
        FailingFileSystem failing(*fileSystem_);
        failing.failAt(step, span, EIO);
        const auto leaf = run(failing, isNameTaken);
        EXPECT_NE(leaf.has_value(), home_.holds("work/item"));
        EXPECT_EQ(leaf ? home_.read("data/Trash/files/" + *leaf) : home_.read("work/item"), "content");
        if (span == FaultSpan::fromThereOn) {
          std::filesystem::remove(home_.at("data/Trash/files/item").bytes);  // what made the name taken is gone as well
          homeTrash()->forgetUnfinished("item", noteFor("item"));
        }
        const bool isNoteOfTakenNameLeft = span == FaultSpan::once && step == lastRemoval;
        if (home_.holds("data/Trash/info")) {
          EXPECT_EQ(notes().size(), (leaf ? 1u : 0u) + (isNoteOfTakenNameLeft ? 1u : 0u));
        }
      }
    }
  }
}

TEST_F(TrashTests, aShortWriteIsContinuedAndAFullDiskLeavesNothing) {
  FailingFileSystem slow(*fileSystem_);
  const auto trash = makeSystemTrash(slow, random_, folders())->folderFor(home_.at("work/x")).value();
  slow.limitWritesTo(1);
  received(*trash, "a");
  EXPECT_EQ(home_.read("data/Trash/info/a.trashinfo"), trashInfoText(home_.at("work/a").bytes, deletedAt_, someMove));
  slow.limitWritesTo(0);
  home_.write("work/b", "");
  EXPECT_EQ(receive(*trash, "b").error().code, EIO);
  EXPECT_TRUE(home_.holds("work/b"));
  EXPECT_THAT(notes(), ElementsAre("a.trashinfo"));
}

TEST_F(TrashTests, takesAwayOnlyItsOwnNotesWithoutAnItem) {
  deletedAt_ = std::chrono::system_clock::now() - std::chrono::hours(2);
  const auto trash = homeTrash();
  const std::string own = trashInfoText(home_.at("work/a.log").bytes, deletedAt_, someMove);
  const auto note = [&](const std::string& leaf, const std::string& text) {
    home_.write("data/Trash/info/" + leaf + ".trashinfo", text);
    setPermissions(home_.at("data/Trash/info/" + leaf + ".trashinfo"), 0600);
  };
  note("a.log", own), note("a.7.log", own), note("a." + uuidText(someMove) + "-9.log", own);
  note("a.2.log", own), home_.write("data/Trash/files/a.2.log", "here");
  note("a.3.log", trashInfoText(home_.at("work/a.log").bytes, deletedAt_, otherMove));
  note("a.4.log", "[Trash Info]\nPath=/of/somebody\n");
  note("a.5.log", own + std::string(64 << 10, '\n'));
  note("b.log", own);
  note("a.8.log", "");  // of another time
  home_.write("elsewhere", own), setPermissions(home_.at("elsewhere"), 0600);
  home_.makeLink("data/Trash/info/a.6.log.trashinfo", home_.at("elsewhere").bytes);
  trash->forgetUnfinished("a.log", noteFor("a.log"));
  EXPECT_THAT(notes(),
              UnorderedElementsAre("a.2.log.trashinfo", "a.3.log.trashinfo", "a.4.log.trashinfo", "a.5.log.trashinfo",
                                   "a.6.log.trashinfo", "a.8.log.trashinfo", "b.log.trashinfo"));
}

TEST_F(TrashTests, aMissingOrUnfinishedNoteIsWrittenAndAWholeOneStays) {
  const std::string own = trashInfoText(home_.at("work/item").bytes, deletedAt_, someMove);
  const std::string foreign = "[Trash Info]\nPath=/of/somebody\n";
  const auto trash = homeTrash();
  const std::string note = "data/Trash/info/item.trashinfo";
  ASSERT_TRUE(trash->ensureNote("item", noteFor("item")));
  EXPECT_EQ(home_.read(note), own);
  home_.write("data/Trash/info/.writing-00000000-8B86-4011-B42D-00C04FC964FF", "left by a killed process");
  for (const std::string& before :
       {std::string(), std::string("[Trash Info]\nPath=/cu"), std::string(100, '\0'), own}) {
    home_.write(note, before);
    ASSERT_TRUE(trash->ensureNote("item", noteFor("item")));
    EXPECT_EQ(home_.read(note), own);
  }
  home_.write(note, foreign);
  ASSERT_TRUE(trash->ensureNote("item", noteFor("item")));
  EXPECT_EQ(home_.read(note), foreign);
  ASSERT_TRUE(trash->ensureNote(std::string(245, 'l'), noteFor("item")));
  home_.write("data/Trash/info/" + std::string(245, 'l') + ".trashinfo", "");
  ASSERT_TRUE(trash->ensureNote(std::string(245, 'l'), noteFor("item")));
  EXPECT_EQ(notes().size(), 2u);

  home_.write("victim", "");
  home_.makeLink("data/Trash/info/link.trashinfo", home_.at("victim").bytes);
  EXPECT_EQ(trash->ensureNote("link", noteFor("link")).error().code, EEXIST);
  EXPECT_EQ(home_.read("victim"), "");
}

TEST_F(TrashTests, usesNoTrashThatSomebodyElseCouldHaveMadeOrCanChange) {
  struct Case {
    const char* what;
    std::function<void()> spoil;
  };
  const auto replaceByLink = [&](const char* name) {
    std::filesystem::rename(home_.at(name).bytes, home_.at("elsewhere").bytes);
    home_.makeLink(name, home_.at("elsewhere").bytes);
  };
  const auto give = [&](const char* name) { std::ignore = ::chown(home_.at(name).bytes.c_str(), 12345, 0); };
  const Case cases[] = {
      {"writable by group", [&] { setPermissions(home_.at("data/Trash"), 0770); }},
      {"writable by others", [&] { setPermissions(home_.at("data/Trash"), 0702); }},
      {"items writable by others", [&] { setPermissions(home_.at("data/Trash/files"), 0707); }},
      {"items a link", [&] { replaceByLink("data/Trash/files"); }},
      {"notes a link", [&] { replaceByLink("data/Trash/info"); }},
      {"a file", [&] { std::filesystem::remove_all(home_.at("data/Trash").bytes), home_.write("data/Trash", ""); }},
      {"foreign", [&] { give("data/Trash"); }},
      {"foreign items", [&] { give("data/Trash/files"); }},
      {"foreign notes", [&] { give("data/Trash/info"); }},
  };
  ApplicationFolders confined = folders();  // so that no other Trash of this machine is used instead
  confined.isConfined = true;
  for (const Case& each : cases) {
    if (std::string_view(each.what).starts_with("foreign") && ::geteuid() != 0) continue;
    SCOPED_TRACE(each.what);
    std::filesystem::remove_all(home_.at("data").bytes), std::filesystem::remove_all(home_.at("elsewhere").bytes);
    home_.makeFolders("data");
    const auto trash = makeSystemTrash(*fileSystem_, random_, confined);
    const FilePath directory = trash->folderFor(home_.at("work/x")).value()->directory();
    ASSERT_TRUE(trash->open(directory));
    each.spoil();
    EXPECT_EQ(trash->folderFor(home_.at("work/x")).error().code, EXDEV);
    EXPECT_FALSE(trash->open(directory));
  }
}

TEST_F(TrashTests, followsLinksOfTheUserToTheTrashButNoneToARecordedOne) {
  std::filesystem::remove(home_.at("data").bytes);
  home_.makeFolders("real");
  home_.makeLink("data", "real/share");
  const auto trash = makeSystemTrash(*fileSystem_, random_, folders());
  const auto folder = trash->folderFor(home_.at("work/x")).value();
  EXPECT_EQ(folder->directory(), home_.at("real/share/Trash/files"));
  EXPECT_EQ(trash->open(folder->directory()).value()->directory(), folder->directory());
  EXPECT_EQ(trash->open(home_.at("data/Trash/files")).error().code, ELOOP);
  EXPECT_EQ(trash->open(home_.at("real/other/Trash/files")).error().code, ENOENT);
  EXPECT_EQ(trash->open(home_.at("work")).error().code, EINVAL);
  std::filesystem::remove(home_.at("real/share/Trash/info").bytes);
  EXPECT_EQ(trash->open(folder->directory()).error().code, ENOENT);
  EXPECT_FALSE(home_.holds("real/share/Trash/info"));
}

TEST_F(TrashTests, aConfinedHomeUsesNoTrashOutsideOfIt) {
  TempFolder outside;
  ApplicationFolders confined = folders();
  confined.isConfined = true;
  confined.data = outside.path();
  const auto trash = makeSystemTrash(*fileSystem_, random_, confined);
  EXPECT_EQ(trash->folderFor(home_.at("work/x")).error().code, EXDEV);
  EXPECT_FALSE(outside.holds("Trash"));
  outside.makeFolders("Trash/files"), outside.makeFolders("Trash/info"), setPermissions(outside.at("Trash"), 0700);
  EXPECT_EQ(trash->open(outside.at("Trash/files")).error().code, EXDEV);
}

TEST_F(TrashTests, passesFoldersThatCannotBeReadByTheirPath) {
  FailingFileSystem failing(*fileSystem_);
  failing.countOnly({FileCall::openFolder});
  failing.failAt(1, FaultSpan::once, EACCES);
  const auto trash = makeSystemTrash(failing, random_, folders());
  EXPECT_EQ(trash->folderFor(home_.at("work/x")).value()->directory(), home_.at("data/Trash/files"));
  failing.failAt(failing.calls() + 1, FaultSpan::once, EACCES);
  EXPECT_TRUE(trash->open(home_.at("data/Trash/files")));
  std::filesystem::rename(home_.at("data").bytes, home_.at("real").bytes);
  home_.makeLink("data", "real");
  const std::size_t depth = componentsOf(home_.path().bytes).size();
  failing.failAt(failing.calls() + depth + 1, FaultSpan::once, EACCES);
  EXPECT_EQ(trash->open(home_.at("data/Trash/files")).error().code, ELOOP);
}

TEST_F(TrashTests, tellsTheDesktopTheSizesOfFolders) {
  const auto trash = homeTrash();
  home_.makeFolders("work/new folder");
  received(*trash, "kept"), received(*trash, "replaced"), receive(*trash, "new folder").value();
  const std::string file = "data/Trash/directorysizes";
  home_.write(file, "5 7 kept\n6 8 gone\n9 9 replaced\n");
  home_.write(file + ".writing-00000000-8B86-4011-B42D-00C04FC964FF", "left by a killed process");
  const auto modified = [&](const char* note) {
    struct stat status {};
    EXPECT_EQ(::stat(home_.at(std::string("data/Trash/info/") + note).bytes.c_str(), &status), 0);
    return std::to_string(status.st_mtim.tv_sec);
  };
  trash->tellSizes({{"new folder", 4096}, {"replaced", 1}, {"never was", 2}});
  EXPECT_EQ(home_.read(file), "5 7 kept\n4096 " + modified("new folder.trashinfo") + " new%20folder\n1 " +
                                  modified("replaced.trashinfo") + " replaced\n");
  EXPECT_EQ(namesIn(home_.at("data/Trash")).size(), 3u);

  home_.write(file, "not such a file");
  trash->tellSizes({{"kept", 1}});
  EXPECT_EQ(home_.read(file), "not such a file");
  std::filesystem::remove(home_.at(file).bytes);
  home_.write("victim", "");
  home_.makeLink(file, home_.at("victim").bytes);
  trash->tellSizes({{"kept", 1}});
  EXPECT_EQ(home_.read("victim"), "");
}

}  // namespace
}  // namespace quorvane
