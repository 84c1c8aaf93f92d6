#include "quorvane/developer/DockerRemovalJournal.h"

namespace quorvane {

Outcome<void, RecoveryStoreError> DockerRemovalJournal::recordUntried(const std::vector<CleaningHistoryItem>& items) {
  OpenHistory::Change change;
  change.inserted.reserve(items.size());
  for (const CleaningHistoryItem& item : items) change.inserted.push_back(entryOf(item));
  return write(std::move(change));
}

Outcome<void, RecoveryStoreError> DockerRemovalJournal::announce(CleaningHistoryItem& item,
                                                                 std::vector<std::string> command) {
  item.outcome = CleaningHistoryItemOutcome::failed;
  item.failureReason = texts_("cleanup.irreversible.interrupted");
  item.pendingIrreversible = IrreversibleRemovalIntent{wholeSeconds(clock_.now()), std::move(command)};
  return write({.inserted = {entryOf(item)}});
}

void DockerRemovalJournal::record(const CleaningHistoryItem& item) { receipts_.push_back(entryOf(item)); }

bool DockerRemovalJournal::finish() { return write({}).has_value(); }

/// With the receipts that wait, which go on waiting where that fails.
Outcome<void, RecoveryStoreError> DockerRemovalJournal::write(OpenHistory::Change change) {
  change.replaced = receipts_;
  auto written = history_.write(std::move(change));
  if (written) receipts_.clear();
  return written;
}

CleaningHistoryEntry DockerRemovalJournal::entryOf(const CleaningHistoryItem& item) const {
  CleaningHistoryEntry entry;
  entry.id = item.id;
  entry.date = run_;
  entry.source = CleaningHistorySource::docker;
  entry.items = {item};
  if (item.outcome == CleaningHistoryItemOutcome::removed) {
    entry.itemCount = 1;
    entry.reclaimedBytes = item.size;
  } else {
    entry.failures = {item.name};
  }
  return entry;
}

}  // namespace quorvane
