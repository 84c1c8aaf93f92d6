#pragma once

#include "quorvane/app/cli/terminal/Console.h"
#include "quorvane/core/ScanItem.h"
#include "quorvane/removal/Remover.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace quorvane {

/// An item that was to go to the Trash and did not.
struct FailedItem {
  Uuid id;
  FilePath path;
  std::string name;
  RemovalRefusal refusal;
};

/// What came of a removal, or of its rehearsal.
struct RemovalSummary {
  bool isRehearsal = false;
  std::vector<CleaningHistoryEntry> entries = {};
  std::vector<FailedItem> failures = {};
  std::vector<FilePath> wentAlong = {};  ///< named too, but inside of another item that was moved
  std::variant<std::vector<ScanItem>, std::vector<RemovalRequest>> wouldMove = {};  ///< of a rehearsal
  std::int64_t movedCount = 0;
  std::int64_t movedBytes = 0;
  std::optional<std::int64_t> availableBytesDelta = {};
};

/// What these take on the disk, those inside of others counted once.
std::int64_t togetherBytes(const std::vector<RemovalRequest>& requests);

/// The summary as a JSON document.
std::string jsonText(const RemovalSummary& summary);

/// The summary for people. `isOwnTrash` tells that the items went to the Trash that the desktop shows.
std::string removalReport(const RemovalSummary& summary, const ReportStyle& style, bool isOwnTrash);

/// Prints the summary as the person asked for it, tells each failed item, and returns how the run ends.
ExitCode printSummary(Console& console, const RemovalSummary& summary, std::optional<ExitCode> cancelled);

}  // namespace quorvane
