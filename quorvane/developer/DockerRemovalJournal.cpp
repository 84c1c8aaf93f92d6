#include "quorvane/developer/DockerRemovalJournal.h"

#include <utility>

namespace quorvane {

Outcome<void, RecoveryStoreError> DockerRemovalJournal::announce(CleaningHistoryItem& item,
                                                                 std::vector<std::string> command) {
  item.outcome = CleaningHistoryItemOutcome::failed;
  item.failureReason = texts_("cleanup.irreversible.interrupted");
  item.pendingIrreversible = IrreversibleRemovalIntent{wholeSeconds(clock_.now()), std::move(command)};
  return history_.write({.inserted = {entryOf(item)}, .replaced = std::exchange(receipts_, {})});
}

void DockerRemovalJournal::record(const CleaningHistoryItem& item) { receipts_.push_back(entryOf(item)); }

bool DockerRemovalJournal::finish() { return history_.write({.replaced = std::exchange(receipts_, {})}).has_value(); }

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
