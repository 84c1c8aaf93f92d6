#include "quorvane/removal/DirectoryAnchor.h"
#include "tests/support/RemovalHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include <sys/stat.h>

namespace quorvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A run that ended between its announcement and its receipt, and what stood where at the next start.
class ReconciliationTests : public testing::Test {
 protected:
  ReconciliationTests() { home_.folder().write("cache/a/x", "1"); }

  void announce(const std::string& relative = "cache/a") { announceAt(home_.clock().now(), relative); }

  void announceAt(Date date, const std::string& relative = "cache/a") {
    const auto store = home_.newStore();
    ASSERT_TRUE(CleanupMoveJournal(home_.services())
                    .begin(store->open().value(), {home_.request(relative)}, CleaningHistorySource::files, date));
  }

  /// As `announce`, with the record changed before the process ended.
  void announce(const std::function<void(CleaningHistoryItem&)>& change) {
    announce();
    HistoryCache cache;
    const auto history = OpenHistory::open(home_.files(), home_.random(), home_.historyFile(), cache).value();
    CleaningHistoryEntry entry = history->document().entries().front();
    change(entry.items.front());
    ASSERT_TRUE(history->write({.replaced = {entry}}));
  }

  void moveToTrash(const std::string& leaf, const std::string& relative = "cache/a") {
    std::filesystem::rename(home_.at(relative).bytes, home_.at("data/Trash/files/" + leaf).bytes);
  }

  CleaningHistoryItem settled() {
    const auto view = home_.newStore()->load().value();
    return view.entries.front().items.front();
  }

  RemovalHome home_;
};

TEST_F(ReconciliationTests, anItemThatNeverLeftStaysAFailure) {
  announce();
  const CleaningHistoryItem item = settled();
  EXPECT_EQ(item.outcome, CleaningHistoryItemOutcome::failed);
  EXPECT_EQ(item.failureReason, "text of cleanup.journal.interrupted");
  EXPECT_FALSE(item.pendingCleanup);
  EXPECT_TRUE(home_.folder().holds("cache/a/x"));
}

TEST_F(ReconciliationTests, anEmptyNoteThatTheRunLeftGoesAndAnOlderOneStays) {
  const std::string note = "data/Trash/info/a.trashinfo";
  const Date now = std::chrono::system_clock::now();
  for (const Date date : {now, now + std::chrono::hours(2)}) {  // of a run, and of the last of many within a moment
    announceAt(date);
    home_.folder().write(note, "");
    (void)settled();
    EXPECT_FALSE(home_.folder().holds(note));
  }
  announceAt(now);
  home_.folder().write(note, "");
  std::filesystem::last_write_time(home_.at(note).bytes,
                                   std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  (void)settled();
  EXPECT_TRUE(home_.folder().holds(note)) << "of another program";
}

TEST_F(ReconciliationTests, theDesktopIsToldOfNoSizesThatAreNotThere) {
  announce();
  const std::string sizes = "data/Trash/directorysizes";
  home_.folder().write(sizes, "4096 7 a\n");
  home_.folder().write(sizes + ".writing-00000000-8B86-4011-B42D-00C04FC964FF", "4096");
  settled();
  EXPECT_EQ(home_.folder().read(sizes), "");
  EXPECT_THAT(home_.folder().names("data/Trash"), ElementsAre("directorysizes", "files", "info"));
}

TEST_F(ReconciliationTests, anItemThatIsInTheTrashIsFoundByWhatItIs) {
  announce();
  moveToTrash("under another name");
  home_.folder().write("data/Trash/files/a", "a newer item of the same name");
  const CleaningHistoryItem item = settled();
  EXPECT_EQ(item.outcome, CleaningHistoryItemOutcome::movedToTrash);
  EXPECT_EQ(item.trashedPath, home_.at("data/Trash/files/under another name"));
  EXPECT_FALSE(item.failureReason);
  EXPECT_THAT(home_.notes(), ElementsAre("under another name.trashinfo"));
  const auto view = home_.newStore()->load().value();
  EXPECT_EQ(view.entries.front().itemCount, 1);
  EXPECT_EQ(view.entries.front().reclaimedBytes, 4096);
  EXPECT_THAT(view.entries.front().failures, IsEmpty());
}

TEST_F(ReconciliationTests, anItemThatWasMadeAnewMeanwhileDoesNotHideTheMove) {
  announce();
  moveToTrash("a");
  home_.folder().write("cache/a/y", "made again");
  EXPECT_EQ(settled().outcome, CleaningHistoryItemOutcome::movedToTrash);
  EXPECT_EQ(home_.folder().read("cache/a/y"), "made again");
}

TEST_F(ReconciliationTests, oneOfSeveralNamesOfTheSameFileIsTaken) {
  home_.folder().write("cache/f", "1");
  announce("cache/f");
  moveToTrash("b", "cache/f");
  for (const char* leaf : {"a", "f"})
    std::filesystem::create_hard_link(home_.at("data/Trash/files/b").bytes,
                                      home_.at("data/Trash/files/" + std::string(leaf)).bytes);
  EXPECT_EQ(settled().trashedPath, home_.at("data/Trash/files/f"));
}

TEST_F(ReconciliationTests, anItemThatIsNowhereIsAFailureThatSaysSo) {
  announce();
  moveToTrash("a");
  std::filesystem::remove_all(home_.at("data/Trash/files/a").bytes);
  const CleaningHistoryItem item = settled();
  EXPECT_EQ(item.outcome, CleaningHistoryItemOutcome::failed);
  EXPECT_EQ(item.failureCategory, CleanupFailureCategory::missing);
  EXPECT_FALSE(item.pendingCleanup);
}

TEST_F(ReconciliationTests, aTrashThatCannotBeToldLeavesTheItemPending) {
  const FilePath files = home_.at("data/Trash/files");
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"missing", [&] { std::filesystem::rename(home_.at("data/Trash").bytes, home_.at("data/elsewhere").bytes); }},
      {"another folder",
       [&] {
         std::filesystem::rename(files.bytes, home_.at("data/elsewhere").bytes);
         home_.folder().makeFolders("data/Trash/files");
       }},
      {"writable by others", [&] { ::chmod(files.bytes.c_str(), 0777); }},
      {"a link",
       [&] {
         std::filesystem::rename(files.bytes, home_.at("data/elsewhere").bytes);
         home_.folder().makeLink("data/Trash/files", home_.at("data/elsewhere").bytes);
       }},
  };
  for (const auto& [name, spoil] : cases) {
    SCOPED_TRACE(name);
    for (const char* top : {"data", "cache"}) std::filesystem::remove_all(home_.at(top).bytes);
    home_.folder().write("cache/a/x", "1");
    announce();
    moveToTrash("a");
    spoil();
    EXPECT_TRUE(settled().pendingCleanup);
    EXPECT_EQ(home_.newStore()->load()->pendingCount, 1);
    // A new clean goes on all the same.
    home_.folder().write("cache/b", "2");
    EXPECT_EQ(home_.newStore()->open().value()->document().entries().size(), 1U);
  }
}

TEST_F(ReconciliationTests, aHugeTrashIsLookedThroughForTheNamesThatItGives) {
  announce();
  home_.folder().write("one", "1");
  for (int i = 0; i < 20'000; ++i)
    std::filesystem::create_hard_link(home_.at("one").bytes, home_.at("data/Trash/files/" + std::to_string(i)).bytes);
  const std::pair<const char*, bool> cases[] = {{"a", false}, {"a.2", false}, {"a name of others", true}};
  for (const auto& [leaf, staysPending] : cases) {
    SCOPED_TRACE(leaf);
    home_.folder().write("cache/a/x", "1");
    announce();
    moveToTrash(leaf);
    EXPECT_EQ(settled().pendingCleanup.has_value(), staysPending);
  }
}

TEST_F(ReconciliationTests, anotherDeviceNumberIsAcceptedOnlyForAProvenVolume) {
  const auto renumber = [](CleaningHistoryItem& item, bool alsoVolume) {
    item.pendingCleanup->identity.device += 1;
    item.pendingCleanup->trashLocation->identity.device += 1;
    if (alsoVolume) item.pendingCleanup->trashLocation->volumeUUID = "6F9619FF-8B86-4011-B42D-00C04FC964FF";
  };
  for (const bool alsoVolume : {false, true}) {
    for (const char* top : {"data", "cache"}) std::filesystem::remove_all(home_.at(top).bytes);
    home_.folder().write("cache/a/x", "1");
    announce([&](CleaningHistoryItem& item) { renumber(item, alsoVolume); });
    moveToTrash("a");
    EXPECT_EQ(settled().pendingCleanup.has_value(), alsoVolume);
  }
}

TEST_F(ReconciliationTests, anUnansweredAdministratorsMoveStaysOpen) {
  announce([](CleaningHistoryItem& item) { item.pendingCleanup->externalMoveRequested = true; });
  EXPECT_TRUE(settled().pendingCleanup);
  moveToTrash("a");
  EXPECT_EQ(settled().outcome, CleaningHistoryItemOutcome::movedToTrash);
}

TEST_F(ReconciliationTests, whileAnotherRunWorksItsItemsAreInFlight) {
  const auto store = home_.newStore();
  const auto transaction =
      CleanupMoveJournal(home_.services())
          .begin(store->open().value(), {home_.request("cache/a")}, CleaningHistorySource::files, home_.clock().now())
          .value();
  const auto view = home_.newStore()->load().value();
  EXPECT_TRUE(view.isInFlight);
  EXPECT_EQ(view.pendingCount, 1);
  EXPECT_EQ(home_.newStore()->open().error().fault, RecoveryStoreFault::busy);
}

TEST_F(ReconciliationTests, lookingAtNoHistoryMakesNothing) {
  EXPECT_THAT(home_.newStore()->load()->entries, IsEmpty());
  EXPECT_FALSE(home_.folder().holds("data"));
}

TEST_F(ReconciliationTests, everyRunHasADateOfItsOwn) {
  home_.folder().write("cache/b", "2");
  const Date first = home_.clean({"cache/a"})[0].date, second = home_.clean({"cache/b"})[0].date;
  EXPECT_EQ(first, wholeSeconds(home_.clock().now()));
  EXPECT_EQ(second, first + std::chrono::seconds(1));
}

}  // namespace
}  // namespace quorvane
