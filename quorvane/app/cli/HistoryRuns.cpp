#include "quorvane/app/cli/HistoryRuns.h"

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

namespace quorvane {

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

std::vector<RecoveryReference> lastRunInTrash(const std::vector<CleaningHistoryEntry>& entries) {
  for (const HistoryRun& run : historyRuns(entries)) {
    auto references = inTrash(run.entries);
    if (!references.empty()) return references;
  }
  return {};
}

const CleaningHistoryEntry* entryWith(const std::vector<CleaningHistoryEntry>& entries, const Uuid& id) {
  const auto named = std::ranges::find(entries, id, &CleaningHistoryEntry::id);
  if (named != entries.end()) return &*named;
  const auto holds = [&](const CleaningHistoryEntry& entry) {
    return std::ranges::find(entry.items, id, &CleaningHistoryItem::id) != entry.items.end();
  };
  const auto holder = std::ranges::find_if(entries, holds);
  return holder == entries.end() ? nullptr : &*holder;
}

const CleaningHistoryItem* itemOf(const std::vector<CleaningHistoryEntry>& entries,
                                  const RecoveryReference& reference) {
  const auto entry = std::ranges::find(entries, reference.entryID, &CleaningHistoryEntry::id);
  if (entry == entries.end()) return nullptr;
  const auto item = std::ranges::find(entry->items, reference.itemID, &CleaningHistoryItem::id);
  return item == entry->items.end() ? nullptr : &*item;
}

}  // namespace quorvane
