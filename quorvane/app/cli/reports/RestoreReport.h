#pragma once

#include "quorvane/app/cli/reports/HistoryRuns.h"
#include "quorvane/app/cli/terminal/ReportText.h"

#include <string>
#include <vector>

namespace quorvane {

/// What came of each item that was to be put back.
struct RestoreSummary {
  struct Restored {
    FilePath original;
    FilePath restored;
  };
  struct Failed {
    FilePath path;
    RecoveryFailure failure;
    Message reason;
  };
  std::vector<Restored> restored;
  std::vector<Failed> failed;
  std::int64_t remainingCount = 0;
};

/// Compares what the history said before with what came of a batch.
RestoreSummary restoreSummary(const std::vector<CleaningHistoryEntry>& before,
                              const std::vector<RecoveryReference>& references, const RecoveryBatchResult& result);

/// What was put back where, for people, and what to do about the rest.
std::string restoreReport(const RestoreSummary& summary, const ReportStyle& style);

}  // namespace quorvane
