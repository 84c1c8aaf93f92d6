#include "quorvane/developer/DockerRemovalJournal.h"

namespace quorvane {

Outcome<void, RecoveryStoreError> DockerRemovalJournal::announce(CleaningHistoryItem& item,
                                                                 std::vector<std::string> command) {
  item.outcome = CleaningHistoryItemOutcome::failed;
  item.failureReason = texts_("cleanup.irreversible.interrupted");
  item.pendingIrreversible = IrreversibleRemovalIntent{wholeSeconds(clock_.now()), std::move(command)};
  return write({.inserted = {entryOf(item)}});
}

void DockerRemovalJournal::record(const CleaningHistoryItem& item) { receipts_.push_back(entryOf(item)); }

void DockerRemovalJournal::recordUntried(const CleaningHistoryItem& item) {
  untried_.insert(untried_.begin(), entryOf(item));
}

bool DockerRemovalJournal::finish() { return write({}).has_value(); }

/// With all that waits, which goes on waiting where that fails.
Outcome<void, RecoveryStoreError> DockerRemovalJournal::write(OpenHistory::Change change) {
  change.replaced = receipts_;
  change.inserted.insert(change.inserted.end(), untried_.begin(), untried_.end());
  auto written = history_.write(std::move(change));
  if (!written) return written;
  receipts_.clear();
  untried_.clear();
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
