#include "quorvane/removal/RestoredName.h"
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

class RestorationTests : public testing::Test {
 protected:
  RecoveryBatchResult restore(const std::vector<RecoveryReference>& references, const RestoreOptions& options = {}) {
    return home_.newStore()->restore(references, options).value().result;
  }

  /// A fresh home with one cleaned folder, "cache/a".
  RecoveryReference cleanedFolder() {
    for (const char* top : {"data", "cache", "precious"}) std::filesystem::remove_all(home_.at(top).bytes);
    home_.folder().write("cache/a/x", "1");
    return referencesTo(home_.clean({"cache/a"}))[0];
  }

  std::string today() { return isoText(home_.clock().now()).substr(0, 10); }

  RemovalHome home_;
};

TEST_F(RestorationTests, putsAnItemBackAsItWas) {
  const RecoveryReference reference = cleanedFolder();
  const RecoveryBatchResult result = restore({reference});
  EXPECT_EQ(result.restoredCount, 1);
  EXPECT_EQ(result.failedCount, 0);
  EXPECT_EQ(result.remainingCount, 0);
  const CleaningHistoryItem& item = result.entries[0].items.front();
  EXPECT_EQ(item.restoredPath, home_.at("cache/a"));
  EXPECT_TRUE(item.restoredAt);
  EXPECT_FALSE(item.pendingRestorePath);
  EXPECT_THAT(home_.recorded(), ElementsAre(item));
  EXPECT_EQ(home_.folder().read("cache/a/x"), "1");
  EXPECT_THAT(home_.trashed(), IsEmpty());
  EXPECT_THAT(home_.notes(), IsEmpty());
}

TEST_F(RestorationTests, saysWhyAnItemStaysWhereItIs) {
  const auto inTrash = [&] { return home_.at("data/Trash/files/a").bytes; };
  const auto change = [&](const std::function<void(CleaningHistoryItem&)>& spoil) {
    HistoryCache cache;
    const auto history = OpenHistory::open(home_.files(), home_.random(), home_.historyFile(), cache).value();
    CleaningHistoryEntry entry = history->document().entries().front();
    spoil(entry.items.front());
    ASSERT_TRUE(history->write({.replaced = {entry}}));
  };
  struct Case {
    const char* name;
    RecoveryFailure failure;
    std::function<void()> spoil;
  };
  const Case cases[] = {
      {"the place is taken", RecoveryFailure::conflict, [&] { home_.folder().write("cache/a", "new"); }},
      {"a dangling link is there", RecoveryFailure::conflict, [&] { home_.folder().makeLink("cache/a", "nowhere"); }},
      {"the Trash was emptied", RecoveryFailure::missing, [&] { std::filesystem::remove_all(inTrash()); }},
      {"the Trash is gone", RecoveryFailure::missing,
       [&] { std::filesystem::remove_all(home_.at("data/Trash").bytes); }},
      {"another thing in the Trash", RecoveryFailure::changed,
       [&] {
         std::filesystem::rename(inTrash(), home_.at("data/moved").bytes);
         home_.folder().write("data/Trash/files/a", "another");
       }},
      {"another Trash", RecoveryFailure::changed,
       [&] {
         std::filesystem::rename(home_.at("data/Trash/files").bytes, home_.at("data/old").bytes);
         home_.folder().makeFolders("data/Trash/files");
         std::filesystem::rename(home_.at("data/old/a").bytes, inTrash());
       }},
      {"never moved", RecoveryFailure::unsupported,
       [&] { change([](auto& item) { item.outcome = CleaningHistoryItemOutcome::failed; }); }},
      {"removed by a command", RecoveryFailure::unsupported,
       [&] { change([](auto& item) { item.outcome = CleaningHistoryItemOutcome::removed; }); }},
      {"back already", RecoveryFailure::unsupported,
       [&] { change([&](auto& item) { item.restoredPath = item.originalPath; }); }},
      {"the folder is gone", RecoveryFailure::parentMissing, [&] { std::filesystem::remove(home_.at("cache").bytes); }},
      {"the folder became a link", RecoveryFailure::parentMissing,
       [&] {
         std::filesystem::rename(home_.at("cache").bytes, home_.at("precious").bytes);
         home_.folder().makeLink("cache", home_.at("precious").bytes);
       }},
      {"the folder became a file", RecoveryFailure::parentMissing,
       [&] {
         std::filesystem::remove(home_.at("cache").bytes);
         home_.folder().write("cache", "a file");
       }},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    const RecoveryReference reference = cleanedFolder();
    each.spoil();
    const RecoveryBatchResult result = restore({reference});
    EXPECT_EQ(result.failedCount, 1);
    EXPECT_EQ(result.restoredCount, 0);
    const CleaningHistoryItem& item = result.entries[0].items.front();
    EXPECT_EQ(item.restoreFailure, each.failure);
    EXPECT_TRUE(item.restoreAttemptedAt);
    EXPECT_FALSE(item.pendingRestorePath);
  }
}

/// What the system answers becomes the reason: to looking at the old place, and to the move itself.
TEST_F(RestorationTests, tellsTheSystemsReasons) {
  const std::pair<int, RecoveryFailure> cases[] = {{EACCES, RecoveryFailure::permission},
                                                   {EROFS, RecoveryFailure::permission},
                                                   {EXDEV, RecoveryFailure::other},
                                                   {EEXIST, RecoveryFailure::conflict},
                                                   {EIO, RecoveryFailure::other}};
  for (const auto& [code, expected] : cases) {
    SCOPED_TRACE(code);
    const RecoveryReference reference = cleanedFolder();
    home_.files().countOnly({FileCall::renameExclusive});
    home_.files().failAt(home_.files().calls() + 1, FaultSpan::once, code);
    EXPECT_EQ(restore({reference}).entries[0].items.front().restoreFailure, expected);
    EXPECT_EQ(restore({reference}).restoredCount, 1) << "nothing keeps a second attempt back";
  }
}

TEST_F(RestorationTests, keepsBothWhereThePlaceIsTaken) {
  home_.folder().write("cache/plan.txt", "old");
  const auto references = referencesTo(home_.clean({"cache/plan.txt"}));
  home_.folder().write("cache/plan.txt", "new");
  home_.folder().write("cache/plan (restored " + today() + ").txt", "from before");
  const RecoveryBatchResult result = restore(references, {.onConflict = RestoreConflictPolicy::keepBoth});
  const std::string name = "cache/plan (restored " + today() + " 2).txt";
  EXPECT_EQ(result.entries[0].items.front().restoredPath, home_.at(name));
  EXPECT_EQ(home_.folder().read(name), "old");
  EXPECT_EQ(home_.folder().read("cache/plan.txt"), "new");
}

TEST_F(RestorationTests, namesOfBothFitEveryFileSystem) {
  const Date date = dateFromTimestamp(1'795'250'000, 0);
  const std::string day = isoText(date).substr(0, 10);
  EXPECT_EQ(restoredName("a.tar.gz", false, date, 1), "a.tar (restored " + day + ").gz");
  EXPECT_EQ(restoredName("a.d", true, date, 1), "a.d (restored " + day + ")");
  EXPECT_EQ(restoredName(".profile", false, date, 3), ".profile (restored " + day + " 3)");
  for (const std::string& leaf : {std::string(255, 'x'), std::string(251, 'x') + ".txt", std::string(255, '\xff')})
    EXPECT_EQ(restoredName(leaf, false, date, 1).size(), 255U);
  std::string umlauts;
  while (umlauts.size() < 254) umlauts += "ä";
  const std::string cut = restoredName(umlauts, false, date, 1);
  EXPECT_TRUE(cut.starts_with("ä") && cut.contains("ä (restored ")) << "no letter is cut in two";
}

TEST_F(RestorationTests, goesOnAfterAFailure) {
  for (const char* file : {"cache/1", "cache/2", "cache/3"}) home_.folder().write(file, file);
  auto references = referencesTo(home_.clean({"cache/1", "cache/2", "cache/3"}));
  std::filesystem::remove(home_.at("data/Trash/files/2").bytes);
  references.insert(references.begin(), {home_.random().uuid(), home_.random().uuid()});
  const RecoveryBatchResult result = restore(references);
  EXPECT_EQ(result.restoredCount, 2);
  EXPECT_EQ(result.failedCount, 2);
  EXPECT_EQ(result.remainingCount, 0) << "what is missing does not remain";
  EXPECT_TRUE(home_.folder().holds("cache/1") && home_.folder().holds("cache/3"));
}

TEST_F(RestorationTests, whatWasInsideAnotherItemWaitsForIt) {
  home_.folder().write("cache/a/inner/x", "1");
  home_.folder().write("cache/a/y", "2");
  auto inner = referencesTo(home_.clean({"cache/a/inner"}));
  const auto outer = referencesTo(home_.clean({"cache/a"}));
  EXPECT_EQ(restore({outer[0], inner[0]}).restoredCount, 2);
  EXPECT_EQ(home_.folder().read("cache/a/inner/x"), "1");
  EXPECT_EQ(restore({outer[0], outer[0]}).failedCount, 2);
}

TEST_F(RestorationTests, moreThanOneBatchAndAStopInBetween) {
  std::vector<std::string> all;
  for (int i = 0; i < 64; ++i) all.push_back("cache/" + std::to_string(i));
  for (const std::string& each : all) home_.folder().write(each, each);
  auto references = referencesTo(home_.clean(all));
  home_.folder().write("cache/more", "more");
  references.push_back(referencesTo(home_.clean({"cache/more"}))[0]);
  StopSource stop;
  const RecoveryBatchResult stopped = restore(references, {.stop = stop.token(), .progressed = [&](auto done, auto) {
                                                             if (done == 10) stop.requestStop();
                                                           }});
  EXPECT_EQ(stopped.restoredCount, 10);
  EXPECT_EQ(stopped.remainingCount, 55);
  EXPECT_EQ(home_.newStore()->load()->pendingCount, 0);
  references.erase(references.begin(), references.begin() + 10);
  EXPECT_EQ(restore(references).restoredCount, 55);
}

TEST_F(RestorationTests, nothingElseIsMovedWhateverIsSwapped) {
  const std::pair<const char*, std::function<void()>> swaps[] = {
      {"the item",
       [&] {
         if (!home_.folder().holds("data/Trash/files/a")) return;
         std::filesystem::rename(home_.at("data/Trash/files/a").bytes, home_.at("data/kept").bytes);
         home_.folder().write("data/Trash/files/a", "another");
       }},
      {"the folder",
       [&] {
         std::filesystem::rename(home_.at("cache").bytes, home_.at("data/kept").bytes);
         home_.folder().makeLink("cache", home_.at("precious").bytes);
       }},
      {"the place", [&] { home_.folder().write("cache/a", "new"); }},
  };
  for (const auto& [name, swap] : swaps) {
    std::size_t count = 1;
    for (std::size_t call = 1; call <= count; ++call) {
      SCOPED_TRACE(std::string(name) + " before call " + std::to_string(call));
      const RecoveryReference reference = cleanedFolder();
      home_.folder().makeFolders("precious");
      const auto store = home_.newStore();
      ASSERT_TRUE(store->load());
      const std::size_t before = home_.files().calls();
      bool isThere = false;
      home_.files().beforeCall(before + call, [&, act = swap] {
        isThere = home_.folder().holds("cache/a");  // too late to swap anything
        if (!isThere) act();
      });
      const RecoveryBatchResult result = store->restore({reference}, {}).value().result;
      count = home_.files().calls() - before;
      EXPECT_TRUE(std::filesystem::is_empty(home_.at("precious").bytes));
      const CleaningHistoryItem& item = result.entries[0].items.front();
      if (item.restoredPath) {
        const auto found = readIdentity(home_.realFiles(),
                                        home_.at(home_.folder().holds("data/kept/a/x") ? "data/kept/a" : "cache/a"));
        EXPECT_EQ(found.value(), *item.trashIdentity);
      } else {
        EXPECT_TRUE(home_.folder().holds("data/Trash/files/a/x") || home_.folder().holds("data/kept/x"));
      }
    }
  }
}

}  // namespace
}  // namespace quorvane
