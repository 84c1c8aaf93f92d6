#pragma once

#include "quorvane/removal/HistoryStore.h"

#include <string_view>
#include <vector>

namespace quorvane {

/// Writes one run of irreversible removals into the history, under its lock: what is about to be removed before its
/// command runs, and what came of it afterwards.
class DockerRemovalJournal {
 public:
  /// All outlive the object.
  DockerRemovalJournal(OpenHistory& history, const Clock& clock, const RecordTexts& texts, Date run)
      : history_(history), clock_(clock), texts_(texts), run_(run) {}

  /// Writes that these items failed without anything being tried. After a failure the history may hold them or not.
  Outcome<void, RecoveryStoreError> recordUntried(const std::vector<CleaningHistoryItem>& items);

  /// Writes that this item is about to be removed by this command, and the receipts that wait. The item reads as a
  /// failure with an open intent from then on. After a failure nothing may be removed, and the receipts go on waiting.
  Outcome<void, RecoveryStoreError> announce(CleaningHistoryItem& item, std::vector<std::string> command);

  /// The receipt of the item that was announced last; it is written with the next announcement, or by `finish`.
  void record(const CleaningHistoryItem& item);

  /// Writes the receipts that wait. False when the history does not hold them: their intents stay open.
  bool finish();

 private:
  Outcome<void, RecoveryStoreError> write(OpenHistory::Change change);
  CleaningHistoryEntry entryOf(const CleaningHistoryItem& item) const;

  OpenHistory& history_;
  const Clock& clock_;
  const RecordTexts& texts_;
  const Date run_;
  std::vector<CleaningHistoryEntry> receipts_;
};

}  // namespace quorvane
