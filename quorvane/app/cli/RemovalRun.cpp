#include "quorvane/app/cli/RemovalRun.h"

#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/ServiceErrors.h"

namespace quorvane {

namespace {

FailedItem failedItem(const ScanItem& item, const RemovalRefusal& refusal) {
  return {item.id, item.url.path, item.displayName, refusal};
}

FailedItem failedItem(const RemovalRequest& request, const RemovalRefusal& refusal) {
  return {request.id, request.path, request.name, refusal};
}

template <class Item>
RemovalSummary summaryOf(RemovalReport report, const std::vector<Item>& items, bool isRehearsal) {
  RemovalSummary summary;
  summary.isRehearsal = isRehearsal;
  summary.entries = std::move(report.entries);
  for (const RemovalFailure& failed : report.failures) {
    FailedItem item = failedItem(items.at(failed.index), failed.refusal);
    if (failed.refusal.reasonKey == "cleanup.failure.inside") {
      summary.wentAlong.push_back(std::move(item.path));
    } else {
      summary.failures.push_back(std::move(item));
    }
  }
  std::vector<Item> wouldMove;
  wouldMove.reserve(report.wouldMove.size());
  for (const std::size_t index : report.wouldMove) wouldMove.push_back(items.at(index));
  summary.wouldMove = std::move(wouldMove);
  summary.movedCount = report.movedCount;
  summary.movedBytes = report.movedBytes;
  summary.availableBytesDelta = report.availableBytesDelta;
  return summary;
}

template <class Item>
CommandOutcome runAny(Console& console, MainLoop& loop, AppModel& model, bool isRehearsal,
                      const std::vector<Item>& items, std::vector<FailedItem> failedBefore, const RemovalStart& start) {
  const auto kind = isRehearsal ? AppModel::RemovalKind::rehearsal : AppModel::RemovalKind::real;
  const CleaningScanProgressUpdate beginning{0, "cleanup.status.checking", std::nullopt};
  auto [outcome, cancelled] = runOperation<RemovalReport, RemovalError>(
      console, loop, model, beginning, [&](RemovalHandlers handlers) { start(kind, std::move(handlers)); });
  if (!outcome) return failure(commandError(outcome.error()));
  const bool wasStopped = outcome->wasStopped;
  RemovalSummary summary = summaryOf(*std::move(outcome), items, isRehearsal);
  summary.failures.insert(summary.failures.begin(), std::make_move_iterator(failedBefore.begin()),
                          std::make_move_iterator(failedBefore.end()));
  // Asked to stop when everything was done already, the run was not cancelled.
  return printSummary(console, summary, wasStopped ? cancelled : std::nullopt);
}

}  // namespace

CommandOutcome runRemoval(Console& console, MainLoop& loop, AppModel& model, bool isRehearsal,
                          const std::vector<ScanItem>& items, const RemovalStart& start) {
  return runAny(console, loop, model, isRehearsal, items, {}, start);
}

CommandOutcome runRemoval(Console& console, MainLoop& loop, AppModel& model, bool isRehearsal,
                          const std::vector<RemovalRequest>& requests, std::vector<FailedItem> failedBefore,
                          const RemovalStart& start) {
  return runAny(console, loop, model, isRehearsal, requests, std::move(failedBefore), start);
}

}  // namespace quorvane
