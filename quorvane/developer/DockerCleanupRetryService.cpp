#include "quorvane/developer/DockerCleanupRetryService.h"

#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerRemovalCheck.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

void add(DockerCleanupPlan& plan, const CleaningHistoryItem& item) {
  if (item.outcome != CleaningHistoryItemOutcome::failed || isPending(item)) return;
  const auto& prune = item.dockerOperation;
  if (prune && prune->kind == DockerBulkKind::buildCache && !prune->reviewedTargets.empty()) plan.prune = prune;
  if (!item.dockerTarget) return;
  DockerRetryTarget target = *item.dockerTarget;
  if (!isCommandTarget(target.resource, target.target.commandTarget)) return;
  target.target.historyLocation = historyLocation(target.resource, target.target.commandTarget);
  target.target.sizeBytes = std::max<std::int64_t>(0, target.target.sizeBytes);
  std::ranges::sort(target.reviewedTags);
  plan.targets.push_back(std::move(target));
}

auto newestRun(std::span<const CleaningHistoryEntry> entries) {
  return std::ranges::find(entries, CleaningHistorySource::docker, &CleaningHistoryEntry::source);
}

/// Runs that follow each other quickly are dated some seconds ahead.
bool isStale(Date run, Date now) {
  return run < now - DockerCleanupRetryService::longestValidity || run > now + std::chrono::minutes(1);
}

}  // namespace

std::string messageKey(DockerRetryFault fault) { return "docker.retry.error." + std::string(caseName(fault)); }

DockerCleanupPlan failedTargets(std::span<const CleaningHistoryEntry> entries) {
  const auto newest = newestRun(entries);
  DockerCleanupPlan plan;
  if (newest == entries.end()) return plan;
  for (const CleaningHistoryEntry& entry : entries)
    if (entry.source == CleaningHistorySource::docker && entry.date == newest->date)
      for (const CleaningHistoryItem& item : entry.items) add(plan, item);
  std::ranges::reverse(plan.targets);  // the history has the one that was announced last first
  return plan;
}

Outcome<DockerReview, DockerRetryFault> DockerCleanupRetryService::plan(std::span<const CleaningHistoryEntry> entries,
                                                                        Date now) const {
  DockerCleanupPlan plan = failedTargets(entries);
  if (plan.isEmpty()) return failure(DockerRetryFault::nothing);
  const Date run = newestRun(entries)->date;
  if (isStale(run, now)) return failure(DockerRetryFault::stale);
  const auto isClosed = [&](const auto& part) { return !mayFollow(client_, part.scope); };
  const bool isAnyClosed = std::ranges::any_of(plan.targets, isClosed) || (plan.prune && isClosed(*plan.prune));
  if (isAnyClosed) return failure(DockerRetryFault::scope);
  return DockerReview{.plan = std::move(plan), .retriedRun = run};
}

}  // namespace quorvane
