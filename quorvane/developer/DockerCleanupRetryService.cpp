#include "quorvane/developer/DockerCleanupRetryService.h"

#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerRemovalCheck.h"

#include <algorithm>

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

}  // namespace

std::string messageKey(DockerRetryFault fault) { return "docker.retry.error." + std::string(caseName(fault)); }

DockerCleanupPlan failedTargets(std::span<const CleaningHistoryEntry> entries) {
  const auto newest = std::ranges::find(entries, CleaningHistorySource::docker, &CleaningHistoryEntry::source);
  DockerCleanupPlan plan;
  if (newest == entries.end()) return plan;
  for (const CleaningHistoryEntry& entry : entries)
    if (entry.source == CleaningHistorySource::docker && entry.date == newest->date)
      for (const CleaningHistoryItem& item : entry.items) add(plan, item);
  std::ranges::reverse(plan.targets);  // the history has the one that was announced last first
  return plan;
}

Outcome<DockerCleanupPlan, DockerRetryFault> DockerCleanupRetryService::plan(
    std::span<const CleaningHistoryEntry> entries) const {
  DockerCleanupPlan plan = failedTargets(entries);
  if (plan.isEmpty()) return failure(DockerRetryFault::nothing);
  const auto isClosed = [&](const auto& part) { return !mayFollow(client_, part.scope); };
  const bool isAnyClosed = std::ranges::any_of(plan.targets, isClosed) || (plan.prune && isClosed(*plan.prune));
  if (isAnyClosed) return failure(DockerRetryFault::scope);
  return plan;
}

}  // namespace quorvane
