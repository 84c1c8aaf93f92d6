#pragma once

#include "quorvane/app/cli/CommandError.h"
#include "quorvane/app/cli/HistoryRuns.h"

#include <string>

namespace quorvane {

/// The entry that a person names by its identifier or that of one of its items; wrong usage when there is none.
inline Outcome<const CleaningHistoryEntry*, CommandError> namedEntry(const std::vector<CleaningHistoryEntry>& entries,
                                                                     const std::string& given) {
  const auto id = uuidFromText(given);
  const CleaningHistoryEntry* entry = id ? entryWith(entries, *id) : nullptr;
  if (entry == nullptr)
    return failure(CommandError{ExitCode::wrongUsage, {"cli.error.noSuchEntry", {{"given", given}}}});
  return entry;
}

}  // namespace quorvane
