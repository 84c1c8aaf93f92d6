#include "quorvane/app/cli/reports/HistoryRuns.h"

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

namespace quorvane {

namespace {

// Only a certain no counts.
bool isGone(const FilePath& path, FileSystem& fileSystem) {
  const auto folder = fileSystem.openStartingFolder(parentOf(path));
  if (!folder) return folder.error().isMissing();
  const auto status = fileSystem.status(folder->number(), std::string(leafOf(path)).c_str());
  return !status && status.error().isMissing();
}

}  // namespace

std::vector<HistoryRun> historyRuns(const std::vector<CleaningHistoryEntry>& entries) {
  std::map<std::pair<Date, CleaningHistorySource>, HistoryRun, std::greater<>> byDate;
  for (const CleaningHistoryEntry& entry : entries) {
    HistoryRun& run = byDate[{entry.date, entry.source}];
    run.date = entry.date;
    run.source = entry.source;
    run.entries.push_back(&entry);
  }
  std::vector<HistoryRun> runs;
  runs.reserve(byDate.size());
  for (auto& [key, run] : byDate) runs.push_back(std::move(run));
  return runs;
}

std::vector<RecoveryReference> inTrash(const std::vector<const CleaningHistoryEntry*>& entries) {
  std::vector<RecoveryReference> references;
  for (const CleaningHistoryEntry* entry : entries)
    for (const CleaningHistoryItem& item : entry->items)
      if (isInTrash(item)) references.push_back({entry->id, item.id});
  return references;
}

void markWhatIsGone(HistoryView& history, FileSystem& fileSystem) {
  for (CleaningHistoryEntry& entry : history.entries)
    for (CleaningHistoryItem& item : entry.items)
      if (isInTrash(item) && item.trashedPath && isGone(*item.trashedPath, fileSystem))
        item.restoreFailure = RecoveryFailure::missing;
}

std::vector<RecoveryReference> lastRunInTrash(const std::vector<CleaningHistoryEntry>& entries) {
  for (const HistoryRun& run : historyRuns(entries)) {
    auto references = inTrash(run.entries);
    if (!references.empty()) return references;
  }
  return {};
}

std::optional<HistoryRun> lastRunForGood(const std::vector<CleaningHistoryEntry>& entries) {
  const auto isForGood = [](const CleaningHistoryItem& item) {
    return item.outcome == CleaningHistoryItemOutcome::removed || item.pendingIrreversible;
  };
  for (const HistoryRun& run : historyRuns(entries)) {
    if (!inTrash(run.entries).empty()) return std::nullopt;
    for (const CleaningHistoryEntry* entry : run.entries)
      if (std::ranges::any_of(entry->items, isForGood)) return run;
  }
  return std::nullopt;
}

const CleaningHistoryItem* itemOf(const std::vector<CleaningHistoryEntry>& entries,
                                  const RecoveryReference& reference) {
  const auto entry = std::ranges::find(entries, reference.entryID, &CleaningHistoryEntry::id);
  if (entry == entries.end()) return nullptr;
  const auto item = std::ranges::find(entry->items, reference.itemID, &CleaningHistoryItem::id);
  return item == entry->items.end() ? nullptr : &*item;
}

}  // namespace quorvane
