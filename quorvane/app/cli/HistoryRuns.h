#pragma once

#include "quorvane/removal/HistoryStore.h"

#include <vector>

namespace quorvane {

/// What one run left in the history: the entries with one date and source.
struct HistoryRun {
  Date date;
  CleaningHistorySource source = CleaningHistorySource::files;
  std::vector<const CleaningHistoryEntry*> entries;  ///< in the order of the history
};

/// The runs, newest first. The entries outlive them.
std::vector<HistoryRun> historyRuns(const std::vector<CleaningHistoryEntry>& entries);

/// What is in the Trash of these entries.
std::vector<RecoveryReference> inTrash(const std::vector<const CleaningHistoryEntry*>& entries);

/// The newest run that has something in the Trash; empty without one.
std::vector<RecoveryReference> lastRunInTrash(const std::vector<CleaningHistoryEntry>& entries);

/// The entry with this identifier, or the one that holds an item with it; null without one.
const CleaningHistoryEntry* entryWith(const std::vector<CleaningHistoryEntry>& entries, const Uuid& id);

/// The item that a reference names; null without one.
const CleaningHistoryItem* itemOf(const std::vector<CleaningHistoryEntry>& entries, const RecoveryReference& reference);

}  // namespace quorvane
