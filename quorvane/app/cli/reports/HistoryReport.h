#pragma once

#include "quorvane/app/cli/reports/HistoryRuns.h"
#include "quorvane/app/cli/terminal/ReportText.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane {

/// The history for people, by run: when, how much, and what became of each item. At most `limit` runs. Laid out, the
/// identifiers are as short as tells all of the history apart; plain, they are whole.
std::string historyReport(const HistoryView& history, std::optional<std::int64_t> limit, const ReportStyle& style);

/// Everything that is known of one entry.
std::string entryReport(const CleaningHistoryEntry& entry, bool isInFlight, const ReportStyle& style);

/// "in the Trash", "put back", "not moved: ..." and so on.
Message stateOf(const CleaningHistoryItem& item, bool isInFlight);

}  // namespace quorvane
