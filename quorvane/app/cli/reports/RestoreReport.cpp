#include "quorvane/app/cli/reports/RestoreReport.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace quorvane {

namespace {

RestoreSummary::Failed failedItem(const CleaningHistoryItem& item, RecoveryFailure failure) {
  return {item.originalPath, failure, {messageKey(failure), {{"folder", parentOf(item.originalPath)}}}};
}

// Why an item that was asked for is not back; nothing when it was not begun.
std::optional<RecoveryFailure> failureOf(const CleaningHistoryItem& before, const CleaningHistoryItem& now) {
  if (!isRestorable(before)) return RecoveryFailure::unsupported;
  return now.restoreFailure;
}

}  // namespace

RestoreSummary restoreSummary(const std::vector<CleaningHistoryEntry>& before,
                              const std::vector<RecoveryReference>& references, const RecoveryBatchResult& result) {
  RestoreSummary summary;
  summary.remainingCount = result.remainingCount;
  for (const RecoveryReference& reference : references) {
    const CleaningHistoryItem* old = itemOf(before, reference);
    const CleaningHistoryItem* now = itemOf(result.entries, reference);
    if (old == nullptr) continue;
    if (now == nullptr) now = old;
    if (isRestorable(*old) && now->restoredAt && now->restoredPath) {
      summary.restored.push_back({now->originalPath, *now->restoredPath});
    } else if (const auto failure = failureOf(*old, *now)) {
      summary.failed.push_back(failedItem(*now, *failure));
    }
  }
  return summary;
}

std::string restoreReport(const RestoreSummary& summary, const ReportStyle& style) {
  ReportText text(style);
  for (const auto& [original, restored] : summary.restored) {
    const std::string place = text.path(restored);
    text.fitted(
        original == restored ? place : text.say({"cli.restore.beside", {{"path", original}, {"place", restored}}}), 2);
  }
  if (summary.restored.empty()) {
    text.line({"cli.restore.restoredNothing", {}});
  } else {
    text.blank();
    text.heading(text.say({"cli.restore.restored", {{"count", std::ssize(summary.restored)}}}));
  }
  if (!summary.failed.empty()) text.line({"cli.restore.notRestored", {{"count", std::ssize(summary.failed)}}});
  std::set<std::string> hints;
  for (const RestoreSummary::Failed& failed : summary.failed) {
    if (failed.failure == RecoveryFailure::conflict) hints.insert(text.say({"cli.restore.hint.conflict", {}}));
    if (failed.failure == RecoveryFailure::parentMissing)
      hints.insert(text.say({"cli.restore.hint.parentMissing", {{"path", parentOf(failed.path)}}}));
  }
  for (const std::string& hint : hints) text.words(hint);
  if (summary.remainingCount > 0) text.line({"cli.restore.remaining", {{"count", summary.remainingCount}}});
  return text.take();
}

}  // namespace quorvane
