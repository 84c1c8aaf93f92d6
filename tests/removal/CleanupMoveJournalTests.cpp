#include "quorvane/removal/CleanupMoveJournal.h"

#include "tests/support/RemovalHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

namespace quorvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Transaction = CleanupMoveJournal::Transaction;

class CleanupMoveJournalTests : public testing::Test {
 protected:
  CleanupMoveJournalTests() {
    home_.folder().write("cache/a/x", "1");
    home_.folder().write("cache/b", "2");
  }

  Outcome<Transaction, RecoveryStoreError> begin(std::vector<CleanupMoveJournal::Request> requests) {
    auto history = store_->open();
    if (!history) return failure(history.error());
    return CleanupMoveJournal(home_.services())
        .begin(*history, std::move(requests), CleaningHistorySource::files, home_.clock().now());
  }

  Transaction begun(const std::vector<std::string>& relatives) {
    std::vector<CleanupMoveJournal::Request> requests;
    for (const std::string& relative : relatives) requests.push_back(home_.request(relative));
    return begin(std::move(requests)).value();
  }

  static std::optional<MoveFailure> refusal(const Transaction& transaction) { return transaction.moves()[0].failure; }

  RemovalHome home_;
  std::unique_ptr<HistoryStore> store_ = home_.newStore();
};

const MoveFailure changed = FileProtectionError::changed;
const MoveFailure externalPending = CleanupMoveError::externalMovePending;

TEST_F(CleanupMoveJournalTests, announcesAPessimisticRecordFirst) {
  const Transaction transaction = begun({"cache/a"});
  const auto text = readHistoryFile(home_.realFiles(), home_.historyFile()).value();
  const CleaningHistoryEntry entry = HistoryDocument::decode(*text)->entries().front();
  const CleaningHistoryItem& item = entry.items.front();
  EXPECT_EQ(entry.id, item.id);
  EXPECT_EQ(entry.itemCount, 0);
  EXPECT_EQ(entry.reclaimedBytes, 0);
  EXPECT_THAT(entry.failures, ElementsAre("a"));
  EXPECT_TRUE(entry.isCleanupReceipt);
  EXPECT_EQ(item.outcome, CleaningHistoryItemOutcome::failed);
  EXPECT_FALSE(item.trashedPath);
  EXPECT_EQ(item.failureReason, "text of cleanup.journal.interrupted");
  ASSERT_TRUE(item.pendingCleanup);
  EXPECT_EQ(item.pendingCleanup->identity, readIdentity(home_.realFiles(), home_.at("cache/a")).value());
  EXPECT_EQ(item.pendingCleanup->trashDirectory, home_.at("data/Trash/files"));
  ASSERT_TRUE(item.pendingCleanup->trashLocation);
  EXPECT_EQ(item.pendingCleanup->trashLocation->identity,
            readIdentity(home_.realFiles(), home_.at("data/Trash/files")).value());
  EXPECT_TRUE(home_.folder().holds("cache/a/x"));
}

TEST_F(CleanupMoveJournalTests, theReceiptOfAMoveSaysWhereTheItemIs) {
  const std::vector<CleaningHistoryEntry> receipts = home_.clean({"cache/a"});
  ASSERT_EQ(receipts.size(), 1U);
  const CleaningHistoryItem& item = receipts[0].items.front();
  EXPECT_EQ(receipts[0].itemCount, 1);
  EXPECT_EQ(receipts[0].reclaimedBytes, 4096);
  EXPECT_THAT(receipts[0].failures, IsEmpty());
  EXPECT_EQ(item.outcome, CleaningHistoryItemOutcome::movedToTrash);
  EXPECT_EQ(item.trashedPath, home_.at("data/Trash/files/a"));
  EXPECT_EQ(item.trashIdentity, readIdentity(home_.realFiles(), home_.at("data/Trash/files/a")).value());
  EXPECT_TRUE(item.trashLocation);
  EXPECT_FALSE(item.pendingCleanup);
  EXPECT_FALSE(item.failureReason);
  EXPECT_THAT(home_.recorded(), ElementsAre(item));
  EXPECT_FALSE(home_.folder().holds("cache/a"));
  EXPECT_EQ(home_.folder().read("data/Trash/files/a/x"), "1");
  EXPECT_THAT(home_.notes(), ElementsAre("a.trashinfo"));
}

TEST_F(CleanupMoveJournalTests, refusesWhatIsNoNewPendingItem) {
  const CleaningHistoryItem known = home_.clean({"cache/b"})[0].items.front();
  const std::pair<const char*, std::function<void(CleaningHistoryItem&)>> cases[] = {
      {"already moved", [](auto& item) { item.outcome = CleaningHistoryItemOutcome::movedToTrash; }},
      {"has a path in the Trash", [&](auto& item) { item.trashedPath = home_.at("t"); }},
      {"known identifier", [&](auto& item) { item.id = known.id; }},
  };
  for (const auto& [name, spoil] : cases) {
    CleanupMoveJournal::Request request = home_.request("cache/a");
    spoil(request.item);
    EXPECT_EQ(refusal(begin({request}).value()), changed) << name;
  }
  const CleanupMoveJournal::Request twice = home_.request("cache/a");
  EXPECT_EQ(begin({twice, twice})->moves()[1].failure, changed);
  EXPECT_EQ(refusal(begun({"cache/nothing"})), MoveFailure(PosixError{ENOENT}));
}

TEST_F(CleanupMoveJournalTests, anItemThatFailsDoesNotKeepTheOthersBack) {
  home_.folder().write("cache/c", "3");
  Transaction transaction = begun({"cache/a", "cache/nothing", "cache/b", "cache/c"});
  std::filesystem::remove(home_.at("cache/b").bytes);
  home_.folder().write("cache/b", "another");
  for (std::size_t i = 0; i < 3; ++i) (void)transaction.perform(i);
  const auto receipts = transaction.finish().value();
  ASSERT_EQ(receipts.size(), 2U);  // the second was never announced, the fourth never tried
  EXPECT_EQ(receipts[0].items.front().outcome, CleaningHistoryItemOutcome::movedToTrash);
  EXPECT_EQ(receipts[1].items.front().failureCategory, CleanupFailureCategory::changedAfterScan);
  EXPECT_EQ(receipts[1].items.front().failureReason, "text of protection.error.changed");
  EXPECT_EQ(home_.recorded().size(), 2U);
  EXPECT_EQ(home_.folder().read("cache/b"), "another");
  EXPECT_TRUE(home_.folder().holds("cache/c"));
  EXPECT_THAT(home_.trashed(), ElementsAre("a"));
}

/// Whatever takes the item's place, or that of a folder above, before each single call that a move makes.
TEST_F(CleanupMoveJournalTests, nothingElseIsMovedWhateverIsSwapped) {
  const auto swapItem = [&](const char* kind) {
    std::filesystem::rename(home_.at("cache/a").bytes, home_.at("elsewhere").bytes);
    if (std::string_view(kind) == "file") home_.folder().write("cache/a", "another");
    if (std::string_view(kind) == "folder") home_.folder().makeFolders("cache/a");
    if (std::string_view(kind) == "link") home_.folder().makeLink("cache/a", home_.at("precious").bytes);
  };
  const auto swapAncestor = [&](bool byLink) {
    std::filesystem::rename(home_.at("cache").bytes, home_.at("elsewhere").bytes);
    if (byLink) home_.folder().makeLink("cache", home_.at("precious").bytes);
    if (!byLink) home_.folder().write("cache/a/x", "another");
  };
  const std::pair<const char*, std::function<void()>> swaps[] = {
      {"file", [&] { swapItem("file"); }},
      {"folder", [&] { swapItem("folder"); }},
      {"link", [&] { swapItem("link"); }},
      {"gone", [&] { swapItem("gone"); }},
      {"ancestor a link", [&] { swapAncestor(true); }},
      {"ancestor", [&] { swapAncestor(false); }},
  };
  for (const auto& [name, swap] : swaps) {
    for (std::size_t call = 1;; ++call) {
      SCOPED_TRACE(std::string(name) + " before call " + std::to_string(call));
      for (const char* top : {"cache", "elsewhere", "precious", "data"})
        std::filesystem::remove_all(home_.at(top).bytes);
      home_.folder().write("cache/a/x", "the item");
      home_.folder().write("precious/a/x", "precious");
      store_ = home_.newStore();
      auto transaction = begun({"cache/a"});
      bool isSwapped = false;
      home_.files().beforeCall(home_.files().calls() + call, [&, act = swap] {
        // Once the item is gone there is nothing left to swap.
        if (!std::filesystem::exists(home_.at("cache/a").bytes)) return;
        act();
        isSwapped = true;
      });
      const auto failed = transaction.perform(0);
      const auto receipts = transaction.finish().value();
      EXPECT_EQ(home_.folder().read("precious/a/x"), "precious");
      const bool isMoved = receipts[0].itemCount == 1;
      EXPECT_EQ(isMoved, !failed);
      if (isMoved) {
        EXPECT_EQ(home_.folder().read("data/Trash/files/a/x"), "the item");
      } else {
        EXPECT_THAT(home_.trashed(), IsEmpty());
        EXPECT_THAT(home_.notes(), IsEmpty());
        const bool isAncestor = std::string_view(name).starts_with("ancestor");
        EXPECT_EQ(home_.folder().read(isAncestor ? "elsewhere/a/x" : "elsewhere/x"), "the item");
      }
      if (!isSwapped) break;
    }
  }
}

TEST_F(CleanupMoveJournalTests, carriesTheAdministratorsMoveThroughItsStates) {
  {
    auto transaction = begun({"cache/a"});
    EXPECT_EQ(transaction.recordExternalTerminalState(0, administratorMove::Cancelled{}).error(), changed);
    ASSERT_TRUE(transaction.markExternalMoveRequested(0));
  }
  store_ = home_.newStore();
  for (const char* blocked : {"cache/a", "cache/a/x", "cache"}) EXPECT_EQ(refusal(begun({blocked})), externalPending);
  EXPECT_FALSE(refusal(begun({"cache/b"})));
  const CleaningHistoryItem open = home_.recorded().back();
  EXPECT_EQ(open.failureReason, "text of cleanup.journal.externalPending");
  EXPECT_EQ(open.pendingCleanup->externalMoveRequested, true);
}

TEST_F(CleanupMoveJournalTests, anAnswerOfTheAdministratorsMoverEndsTheBlock) {
  auto transaction = begun({"cache/a"});
  ASSERT_TRUE(transaction.markExternalMoveRequested(0));
  ASSERT_TRUE(transaction.recordExternalTerminalState(0, administratorMove::Finished{0}));
  const CleaningHistoryItem answered = home_.recorded().front();
  EXPECT_EQ(answered.failureReason, "text of cleanup.journal.interrupted");
  EXPECT_FALSE(answered.pendingCleanup->externalMoveRequested);
  EXPECT_EQ(answered.pendingCleanup->externalMoveTerminalState,
            AdministratorMoveTerminalState(administratorMove::Finished{0}));
  std::filesystem::rename(home_.at("cache/a").bytes, home_.at("data/Trash/files/a 2").bytes);
  ASSERT_TRUE(transaction.complete(0, home_.at("data/Trash/files/a 2")));
  ASSERT_TRUE(transaction.finish());
  EXPECT_EQ(home_.recorded().front().trashedPath, home_.at("data/Trash/files/a 2"));
}

TEST_F(CleanupMoveJournalTests, completesOnlyWhatIsProven) {
  home_.folder().write("data/Trash/files/other", "x");
  auto transaction = begun({"cache/b"});
  EXPECT_EQ(transaction.complete(0, home_.at("cache/b")).error(), changed) << "another folder";
  EXPECT_EQ(transaction.complete(0, home_.at("data/Trash/files/other")).error(), changed) << "another item";
  EXPECT_EQ(transaction.complete(0, home_.at("data/Trash/files/none")).error(), MoveFailure(PosixError{ENOENT}));
  std::filesystem::create_hard_link(home_.at("cache/b").bytes, home_.at("data/Trash/files/b").bytes);
  EXPECT_EQ(transaction.complete(0, home_.at("data/Trash/files/b")).error(), changed) << "it is still there";
}

}  // namespace
}  // namespace quorvane
