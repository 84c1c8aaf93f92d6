#pragma once

#include "quorvane/base/Assert.h"
#include "tests/support/CleaningHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

namespace quorvane {

/// A home in which something is to go wrong on the road of a removal: a folder and files of two places, reviewed, that
/// go in two transactions; one more that a rule keeps; and what nobody asked for.
class RoadScene {
 public:
  RoadScene() {
    home_.write(".cache/folder/a/b", "folder");
    home_.write(".cache/file", "file");
    home_.write("logs/old.log", "log");
    home_.write("kept/ignored", "ignored");
    home_.write("precious/folder/a/b", "precious");
    require(home_.ignoreStore->add(home_.at("kept")).has_value(), "a test can make a rule");
    requests_ = home_.requests({items()[0], items()[1], items()[2], "kept/ignored"});
    requests_.front().size = std::numeric_limits<std::int64_t>::max();  // fills a transaction of its own
  }

  static const std::vector<std::string>& items() {
    static const std::vector<std::string> all{".cache/folder", ".cache/file", "logs/old.log"};
    return all;
  }

  CleaningHome& home() { return home_; }
  FailingFileSystem& files() { return home_.fileSystem; }

  Outcome<RemovalReport, RemovalError> remove() { return home_.remover.remove(requests_, {}, {}); }

  /// Whether all items went, and the ignored one did not.
  bool clean() {
    const auto report = remove();
    return report && report->movedCount == std::ssize(items()) && report->failures.size() == 1;
  }

  /// A history as a new process sees it.
  HistoryStore newStore() { return {home_.moves, home_.random, home_.settings.folders.applicationSupport}; }

  bool restore() {
    HistoryStore store = newStore();
    const auto view = store.load();
    if (!view) return false;
    std::vector<RecoveryReference> references;
    for (const CleaningHistoryEntry& entry : view->entries)
      if (isInTrash(entry.items.front())) references.push_back({entry.id, entry.items.front().id});
    const auto result = store.restore(references, {});
    return result && result->result.failedCount == 0;
  }

  std::vector<std::string> trashed() const { return home_.folder.names(".local/share/Trash/files"); }
  std::vector<std::string> notes() const { return home_.folder.names(".local/share/Trash/info"); }

  /// Holds at every instant, also before anything was settled.
  void expectNothingIsLost() const {
    for (const std::string& item : items()) EXPECT_NE(home_.holds(item), home_.isInTrash(leafOf({item}))) << item;
    EXPECT_EQ(home_.folder.read("kept/ignored"), "ignored");
    expectPreciousUntouched();
  }

  void expectPreciousUntouched() const {
    EXPECT_EQ(home_.folder.read("precious/folder/a/b"), "precious");
    EXPECT_EQ(home_.folder.names("precious"), std::vector<std::string>{"folder"});
  }

  /// Each item is accounted for, and none is said to be moved that is not.
  void expectTrueReport(const Outcome<RemovalReport, RemovalError>& report) const {
    if (!report) {
      EXPECT_THAT(trashed(), testing::IsEmpty()) << "nothing at all was removed";
      return;
    }
    const auto told = fates(home_, requests_, *report);
    EXPECT_EQ(told.size(), requests_.size());
    for (const auto& [path, fate] : told) {
      EXPECT_TRUE(fate != "moved" || !home_.holds(path)) << path;
    }
    EXPECT_LE(report->movedCount, std::ssize(trashed()));
  }

  /// Holds once the next start has settled what was left. So many notes may have lost their items.
  void expectTrueRecords(std::size_t strayNotes = 0) {
    const auto view = newStore().load();
    ASSERT_TRUE(view) << caseName(view.error().fault);
    EXPECT_EQ(view->pendingCount, 0);
    std::vector<std::string> recordedInTrash, expectedNotes;
    for (const CleaningHistoryEntry& entry : view->entries) {
      const CleaningHistoryItem& item = entry.items.front();
      if (!isInTrash(item)) continue;
      recordedInTrash.emplace_back(leafOf(*item.trashedPath));
      EXPECT_EQ(entry.itemCount, 1);
      EXPECT_EQ(readIdentity(*home_.realFileSystem, *item.trashedPath).value_or(FileIdentity{}), *item.trashIdentity);
    }
    std::ranges::sort(recordedInTrash);
    for (const std::string& leaf : recordedInTrash) expectedNotes.push_back(leaf + ".trashinfo");
    EXPECT_EQ(trashed(), recordedInTrash);
    EXPECT_THAT(notes(), testing::IsSupersetOf(expectedNotes));
    EXPECT_LE(notes().size(), expectedNotes.size() + strayNotes);
    ASSERT_TRUE(newStore().open());
    for (const std::string& name : home_.folder.names(".local/share/Quorvane"))
      EXPECT_FALSE(name.contains(".writing-")) << name;
  }

  void expectAllInPlace() const {
    EXPECT_EQ(home_.folder.read(".cache/folder/a/b"), "folder");
    EXPECT_EQ(home_.folder.read(".cache/file"), "file");
    EXPECT_EQ(home_.folder.read("logs/old.log"), "log");
    EXPECT_THAT(trashed(), testing::IsEmpty());
  }

 private:
  CleaningHome home_;
  std::vector<RemovalRequest> requests_;
};

}  // namespace quorvane
