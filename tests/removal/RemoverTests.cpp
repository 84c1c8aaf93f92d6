#include "quorvane/removal/Remover.h"

#include "quorvane/removal/HistoryJournalFile.h"
#include "tests/support/CleaningHome.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>

#include <sys/stat.h>

namespace quorvane {
namespace {

using testing::ElementsAre;
using testing::SizeIs;
using Fates = std::map<std::string, std::string>;

class RemoverTests : public testing::Test {
 protected:
  /// Makes the n-th call of this kind fail, from now on.
  void failAt(FileCall call, std::size_t number, FaultSpan span = FaultSpan::once, int code = EIO) {
    home.fileSystem.countOnly({call});
    home.fileSystem.failAt(home.fileSystem.calls() + number, span, code);
  }

  /// Does something before the n-th call of this kind, from now on.
  void beforeCall(FileCall call, std::size_t number, std::function<void()> action) {
    home.fileSystem.countOnly({call});
    home.fileSystem.beforeCall(home.fileSystem.calls() + number, std::move(action));
  }

  CleaningHome home;
};

TEST_F(RemoverTests, movesWhatIsUnchanged) {
  home.write("file");
  home.write("folder/deep/file", std::string(10'000, 'x'));
  home.write("bad \xff name");
  home.write("target/kept");
  home.folder.makeLink("link", home.at("target").bytes);
  ASSERT_EQ(::mkfifo(home.at("pipe").bytes.c_str(), 0600), 0);
  const auto requests = home.requests({"file", "folder", "bad \xff name", "link", "pipe"});
  const RemovalReport report = home.remove(requests);
  EXPECT_THAT(report.failures, SizeIs(0));
  EXPECT_EQ(report.movedCount, 5);
  EXPECT_FALSE(report.wasStopped);
  EXPECT_TRUE(report.availableBytesDelta.has_value());
  std::int64_t bytes = 0;
  ASSERT_THAT(report.entries, SizeIs(5));
  for (std::size_t i = 0; i < 5; ++i) {
    const CleaningHistoryItem& item = report.entries[i].items.front();
    EXPECT_EQ(item.id, requests[i].id);
    EXPECT_EQ(item.originalPath, requests[i].path);
    EXPECT_EQ(item.size, requests[i].size);
    EXPECT_EQ(item.outcome, CleaningHistoryItemOutcome::movedToTrash);
    EXPECT_EQ(report.entries[i].date, report.entries[0].date);
    EXPECT_FALSE(home.hasEntry(requests[i].path.bytes.substr(home.folder.path().bytes.size() + 1)));
    bytes += item.size;
  }
  EXPECT_EQ(report.movedBytes, bytes);
  EXPECT_EQ(home.folder.read(".local/share/Trash/files/folder/deep/file").size(), 10'000U);
  EXPECT_TRUE(home.hasEntry(".local/share/Trash/files/link"));
  EXPECT_TRUE(home.holds("target/kept"));
  EXPECT_THAT(home.recorded(), SizeIs(5));
  EXPECT_EQ(home.processes.readings, 1) << "one reading of the process table serves a whole second";
}

TEST_F(RemoverTests, recordsThePathWithLinksAboveResolved) {
  home.write("real/item");
  home.folder.makeLink("way", "real");
  RemovalRequest request = home.request("real/item");
  request.path = home.at("way/item");
  const RemovalReport report = home.remove({request});
  ASSERT_THAT(report.entries, SizeIs(1));
  EXPECT_EQ(report.entries[0].items[0].originalPath, home.at("real/item"));
  EXPECT_FALSE(home.holds("real/item"));
  EXPECT_TRUE(home.hasEntry("way"));
}

TEST_F(RemoverTests, asksItsCallerBeforeAndAfterMeasuring) {
  for (const char* name : {"a", "b", "c"}) home.write(name);
  const auto requests = home.requests({"a", "b", "c"});
  const auto refusing = [](std::size_t refused, const std::string& key) {
    return [=](std::size_t index) {
      return index == refused ? std::optional(RemovalRefusal{key, CleanupFailureCategory::other}) : std::nullopt;
    };
  };
  std::vector<std::int64_t> sizes;
  RemovalChecks checks;
  checks.before = refusing(0, "first");
  checks.measured = [&](std::size_t index, const TreeMeasurement& tree) {
    sizes.push_back(tree.allocatedBytes);
    return refusing(1, "second")(index);
  };
  EXPECT_EQ(fates(home, requests, home.remove(requests, {}, checks)),
            (Fates{{"a", "first other"}, {"b", "second other"}, {"c", "moved"}}));
  EXPECT_THAT(sizes, ElementsAre(requests[1].size, requests[2].size));
}

TEST_F(RemoverTests, looksAgainAtWhatOverlaps) {
  const auto made = [this] {
    home.write("tree/inner/file");
    home.write("twice");
    home.write("same/one");
    home.write("same/two");
    home.write("wide/inner/file");
    auto requests =
        home.requests({"tree/inner", "tree", "twice", "same/one", "same/two", "wide", "wide/inner", "wide/inner/file"});
    requests.insert(requests.begin() + 3, requests[2]);
    requests[3].id = home.random.uuid();
    requests[5].id = requests[4].id;
    return requests;
  };
  const auto requests = made();
  const auto expected = [&](const std::string& moved) {
    const std::string changed = "protection.error.changed changedAfterScan", gone = "cleanup.failure.missing missing",
                      inside = "cleanup.failure.inside missing";
    return std::vector<std::string>{moved, changed, moved, gone, moved, changed, moved, inside, inside};
  };
  const auto listed = [&](const RemovalReport& report, const std::string& passed) {
    std::vector<std::string> all(requests.size(), passed);
    for (const RemovalFailure& each : report.failures) all[each.index] = textOf(each.refusal);
    return all;
  };
  const RemovalReport rehearsal = home.remove(requests, {.isRehearsal = true});
  EXPECT_EQ(listed(rehearsal, "would move"), expected("would move"));
  EXPECT_THAT(rehearsal.wouldMove, ElementsAre(0, 2, 4, 6));
  const RemovalReport report = home.remove(requests);
  EXPECT_EQ(listed(report, "moved"), expected("moved"));
  EXPECT_EQ(report.movedCount, 4);
  EXPECT_TRUE(home.holds("tree"));
  EXPECT_TRUE(home.holds("same/two"));
}

TEST_F(RemoverTests, aRehearsalLeavesNothingBehind) {
  home.write("good/file");
  home.write("changed");
  const auto requests = home.requests({"good", "changed"});
  home.write("changed", "something else");
  const auto before = home.everything();
  const RemovalReport report = home.remove(requests, {.isRehearsal = true});
  EXPECT_EQ(fates(home, requests, report),
            (Fates{{"good", "would move"}, {"changed", "protection.error.changed changedAfterScan"}}));
  EXPECT_EQ(home.everything(), before);
  EXPECT_THAT(report.entries, SizeIs(0));
  const auto locked = home.history.open();
  ASSERT_TRUE(locked);
  EXPECT_THAT(home.remove(requests, {.isRehearsal = true}).wouldMove, ElementsAre(0)) << "it takes no lock";
}

TEST_F(RemoverTests, aRehearsalSaysOfWhatLiesInARefusedItemWhatTheRunWouldDo) {
  home.write("tree/inner/file");
  home.write("other/inner/file");
  home.write("other/file");
  auto requests = home.requests({"tree", "tree/inner", "other/inner", "other"});
  home.write("tree/file", "written since");
  home.write("other/inner/file", "written since");
  requests[3] = home.request("other");
  const RemovalReport rehearsal = home.remove(requests, {.isRehearsal = true});
  EXPECT_THAT(rehearsal.wouldMove, ElementsAre(1, 3));
  const RemovalReport report = home.remove(requests);
  EXPECT_EQ(report.movedCount, 2);
  EXPECT_EQ(rehearsal.failures, report.failures);
}

TEST_F(RemoverTests, aRunOfNothingDoesNothing) {
  const auto before = home.everything();
  const RemovalReport report = home.remove({});
  EXPECT_THAT(report.failures, SizeIs(0));
  EXPECT_EQ(home.everything(), before);
}

TEST_F(RemoverTests, stopsAfterTheItemInHand) {
  for (const char* name : {"a", "b", "c"}) home.write(name);
  const auto requests = home.requests({"a", "b", "c"});
  StopSource stop;
  std::vector<std::string> told;
  RemovalOptions options;
  options.stop = stop.token();
  options.progressed = [&](std::size_t done, std::size_t count, const FilePath& path) {
    told.push_back(fmt::format("{} of {}: {}", done, count, leafOf(path)));
  };
  beforeCall(FileCall::renameExclusive, 2, [&] { stop.requestStop(); });
  const RemovalReport report = home.remove(requests, options);
  EXPECT_EQ(fates(home, requests, report), (Fates{{"a", "moved"}, {"b", "moved"}}));
  EXPECT_THAT(told, ElementsAre("1 of 3: a", "2 of 3: b"));
  EXPECT_TRUE(report.wasStopped);
  EXPECT_THAT(home.recorded(), SizeIs(2)) << "what was announced and never tried is no failure";
  EXPECT_TRUE(home.holds("c"));
}

TEST_F(RemoverTests, tellsThatItWasStoppedWhileItProvedTheLastItem) {
  home.write("folder/file");
  const auto requests = home.requests({"folder"});
  for (const bool isRehearsal : {true, false}) {
    StopSource stop;
    RemovalOptions options;
    options.stop = stop.token();
    options.isRehearsal = isRehearsal;
    beforeCall(FileCall::list, 1, [&] { stop.requestStop(); });
    const RemovalReport report = home.remove(requests, options);
    EXPECT_TRUE(report.wasStopped);
    EXPECT_TRUE(report.failures.empty() && report.wouldMove.empty());
  }
  EXPECT_TRUE(home.holds("folder/file"));
}

TEST_F(RemoverTests, whatChangesWhileOthersAreMovedStays) {
  constexpr std::size_t count = 2 * CleanupMoveJournal::mostMoves + 2;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i) names.push_back("item" + std::to_string(i));
  for (const std::string& name : names) home.write(name);
  auto requests = home.requests(names);
  requests[0].size = requests[1].size = std::int64_t{1} << 40;  // each fills a batch of its own
  requests[2].size = -5;
  const std::size_t last = CleanupMoveJournal::mostMoves + 1;  // of the third batch
  beforeCall(FileCall::renameExclusive, 1, [&] { home.write("item1", "written while the batch before is moved"); });
  beforeCall(FileCall::renameExclusive, 2,
             [&] { home.write("item" + std::to_string(last), "written while its batch is moved"); });
  const RemovalReport report = home.remove(requests);
  EXPECT_EQ(report.movedCount, static_cast<std::int64_t>(count) - 2);
  const auto changed = refusalOf(FileProtectionError::changed);
  EXPECT_THAT(report.failures, ElementsAre(RemovalFailure{1, changed}, RemovalFailure{last, changed}));
  const auto recorded = home.recorded();
  ASSERT_GE(recorded.size(), count - 1) << "the first may be found changed before it is announced, or after";
  EXPECT_EQ(recorded.front().items[0].originalPath, requests[count - 1].path) << "newest first";
  for (const CleaningHistoryEntry& entry : recorded) EXPECT_EQ(entry.date, recorded.front().date);
}

TEST_F(RemoverTests, movesNothingThatItCannotAnnounceOrRecord) {
  for (const char* name : {"a", "b", "c"}) home.write(name);
  auto requests = home.requests({"a", "b", "c"});
  requests[0].size = requests[1].size = std::int64_t{1} << 40;  // each fills a batch of its own
  failAt(FileCall::renameReplacing, 1);                         // the announcement of the first
  const auto unannounced = home.remover.remove(requests, {}, {});
  ASSERT_FALSE(unannounced);
  EXPECT_EQ(std::get<RecoveryStoreError>(unannounced.error()).fault, RecoveryStoreFault::notWritten);
  EXPECT_TRUE(home.holds("a"));

  failAt(FileCall::renameReplacing, 2);  // the receipt of the first
  const RemovalReport report = home.remove(requests);
  EXPECT_EQ(fates(home, requests, report), (Fates{{"a", "cleanup.journal.unavailable other"},
                                                  {"b", "history.error.notWritten other"},
                                                  {"c", "history.error.notWritten other"}}));
  EXPECT_EQ(report.movedCount, 1) << "it is in the Trash all the same";
  ASSERT_THAT(report.entries, SizeIs(1));
  EXPECT_EQ(report.entries[0].items[0].cleanupJournalUnavailable, true);
  EXPECT_EQ(report.entries[0].items[0].failureReason, "text of cleanup.journal.unavailable");
  EXPECT_TRUE(home.isInTrash("a"));
  EXPECT_TRUE(home.holds("b"));
}

TEST_F(RemoverTests, laterBatchesStopAtAHistoryThatCannotBeWritten) {
  for (const char* name : {"a", "b", "c"}) home.write(name);
  auto requests = home.requests({"a", "b", "c"});
  requests[0].size = std::int64_t{1} << 40;
  // What became of the first batch and the announcement of the second.
  failAt(FileCall::renameReplacing, 2, FaultSpan::fromThereOn, ENOSPC);
  EXPECT_EQ(fates(home, requests, home.remove(requests)), (Fates{{"a", "cleanup.journal.unavailable other"},
                                                                 {"b", "history.error.notWritten other"},
                                                                 {"c", "history.error.notWritten other"}}));
  EXPECT_TRUE(home.holds("b"));
}

/// So many batches that some are recorded beside a later announcement.
TEST(LongRunTests, isRecordedTrulyWhicheverWriteFails) {
  const std::vector<std::string> names = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"};
  for (const FileCall call : {FileCall::renameReplacing, FileCall::synchronise}) {
    std::size_t number = 1;
    for (bool isReached = true; isReached; ++number) {
      SCOPED_TRACE(testing::Message() << static_cast<int>(call) << " fails at " << number);
      CleaningHome home;
      for (const std::string& name : names) home.write(name);
      auto requests = home.requests(names);
      for (RemovalRequest& request : requests) request.size = std::int64_t{1} << 40;  // a batch of its own
      home.fileSystem.countOnly({call});
      const std::size_t before = home.fileSystem.calls();
      home.fileSystem.failAt(before + number, FaultSpan::once, EIO);
      const auto report = home.remover.remove(requests, {}, {});
      isReached = home.fileSystem.calls() - before >= number;
      std::map<Uuid, int> told, recorded;
      if (report) {
        for (const CleaningHistoryEntry& entry : report->entries) ++told[entry.items.front().id];
      }
      ASSERT_TRUE(home.history.open()) << "what is not recorded yet is found out";
      for (const CleaningHistoryEntry& entry : home.recorded())
        if (entry.itemCount == 1) ++recorded[entry.id];
      for (std::size_t i = 0; i < names.size(); ++i) {
        const int isMoved = home.isInTrash(names[i]) ? 1 : 0;
        EXPECT_NE(home.holds(names[i]), isMoved == 1) << names[i];
        EXPECT_EQ(recorded[requests[i].id], isMoved) << names[i];
        EXPECT_EQ(told[requests[i].id], isMoved) << names[i];
      }
      if (!isReached) {
        EXPECT_EQ(report->movedCount, std::ssize(names));
      }
    }
    EXPECT_GT(number, names.size());
  }
}

TEST_F(RemoverTests, recordsInAFullHistoryWhatWasMovedAndMovesNothingMore) {
  for (const char* name : {"a", "b", "c"}) home.write(name);
  for (int quarter = 0; quarter < 4; ++quarter) {
    CleaningHistoryEntry large;
    large.id = home.random.uuid();
    large.date = home.clock.now();
    large.failures = {std::string(HistoryJournalFile::fullFile / 4 - 300, 'x')};
    ASSERT_TRUE(home.history.open().value()->write({.inserted = {large}}));
  }
  auto requests = home.requests({"a", "b", "c"});
  requests[0].size = std::int64_t{1} << 40;
  EXPECT_EQ(fates(home, requests, home.remove(requests)),
            (Fates{{"a", "moved"}, {"b", "history.error.full other"}, {"c", "history.error.full other"}}));
  EXPECT_EQ(home.recorded().front().itemCount, 1);
  EXPECT_TRUE(home.holds("b"));
}

TEST_F(RemoverTests, reviewsThePathsThatAPersonNames) {
  home.write("folder/file", std::string(10'000, 'x'));
  home.write("odd \xff");
  home.folder.makeLink("way", "folder");
  const auto reviewed =
      home.remover.review({home.at("absent"), home.at("way/file"), home.folder.path(), home.at("odd \xff")}, {});
  ASSERT_EQ(reviewed.size(), 4U);
  EXPECT_EQ(reviewed[0].error(), refusalOf(PosixError{ENOENT}));
  ASSERT_TRUE(reviewed[1]);
  const RemovalRequest same = home.request("folder/file");
  EXPECT_EQ(reviewed[1]->path, home.at("way/file"));
  EXPECT_EQ(reviewed[1]->snapshot, same.snapshot);
  EXPECT_EQ(reviewed[1]->size, same.size);
  EXPECT_NE(reviewed[1]->id, Uuid{});
  EXPECT_EQ(reviewed[2].error(), protectedRefusal());
  EXPECT_EQ(reviewed[3]->name, "odd \xEF\xBF\xBD");
  EXPECT_EQ(home.remove({*reviewed[1]}).movedCount, 1);
}

}  // namespace
}  // namespace quorvane
