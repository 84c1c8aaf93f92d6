#include "quorvane/app/cli/reports/HistoryNames.h"

namespace quorvane {

HistoryNames::HistoryNames(const std::vector<CleaningHistoryEntry>& entries) {
  for (const CleaningHistoryEntry& entry : entries) add(entry.id, entry);
  for (const CleaningHistoryEntry& entry : entries)
    for (const CleaningHistoryItem& item : entry.items) add(item.id, entry);
}

void HistoryNames::add(const Uuid& id, const CleaningHistoryEntry& entry) {
  identifiers_.add(id);
  entries_.emplace(id, &entry);
}

Outcome<HistoryNames::Named, CommandError> HistoryNames::find(const std::string& given) const {
  const auto id = identifiers_.find(given);
  if (!id) return failure(id.error());
  if (!*id) return failure(CommandError{ExitCode::wrongUsage, {"cli.error.noSuchEntry", {{"given", given}}}});
  return Named{entries_.at(**id), **id};
}

}  // namespace quorvane
