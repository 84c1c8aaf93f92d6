#pragma once

#include "quorvane/platform/FileSystem.h"
#include "quorvane/removal/HistoryStore.h"

#include <optional>
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

/// Marks the items of a view whose place in the Trash is empty: somebody emptied it. The history itself stays as it is.
void markWhatIsGone(HistoryView& history, FileSystem& fileSystem);

/// The newest run that has something in the Trash; empty without one.
std::vector<RecoveryReference> lastRunInTrash(const std::vector<CleaningHistoryEntry>& entries);

/// The newest run that left something in the Trash or removed something for good, if that is one of the latter.
std::optional<HistoryRun> lastRunForGood(const std::vector<CleaningHistoryEntry>& entries);

/// The item that a reference names; null without one.
const CleaningHistoryItem* itemOf(const std::vector<CleaningHistoryEntry>& entries, const RecoveryReference& reference);

}  // namespace quorvane
