#pragma once

#include "quorvane/app/cli/CommandError.h"
#include "quorvane/app/cli/HistoryRuns.h"

#include <cstddef>
#include <string>

namespace quorvane {

/// What a person named by an identifier: an entry, and the identifier of that or of one of its items.
struct NamedEntry {
  const CleaningHistoryEntry* entry;
  Uuid id;
};

/// The entry with that identifier, or the one that holds an item with it. The beginning of an identifier will do, from
/// four characters on, when it is that of no other. Wrong usage otherwise; where several begin so, they are told.
Outcome<NamedEntry, CommandError> namedEntry(const std::vector<CleaningHistoryEntry>& entries,
                                             const std::string& given);

/// How many characters tell all identifiers of these apart, but not less than eight.
std::size_t distinctLength(const std::vector<CleaningHistoryEntry>& entries);

}  // namespace quorvane
