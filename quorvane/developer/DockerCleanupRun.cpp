#include "quorvane/developer/DockerCleanupRun.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/developer/DockerCommands.h"
#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerPruneAnswer.h"
#include "quorvane/developer/DockerRechecks.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

std::vector<std::string> withName(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "docker");
  return arguments;
}

bool isNamedIn(const std::vector<std::string>& identifiers, const DockerCleanupTarget& cache) {
  return std::ranges::find(identifiers, cache.commandTarget, shortID) != identifiers.end();
}

/// Texts in the history stand without arguments.
std::string recordKeyOf(const DockerRefusal& refusal) {
  if (refusal.reasonKey == "docker.failure.refused") return "docker.failure.refusedPlainly";
  if (refusal.reasonKey == "docker.failure.unanswered") return "docker.failure.unansweredPlainly";
  return refusal.reasonKey;
}

}  // namespace

Outcome<DockerCleanupReport, RecoveryStoreError> DockerCleanupRun::perform() {
  if (const auto kept = keepRefused(); !kept) return failure(kept.error());
  const std::vector<Step> all = steps();
  const auto before = diskUsage(all);
  for (const Step& step : all) {
    if (options_.stop.stopRequested()) {
      report_.wasStopped = true;
      break;
    }
    take(step);
    if (unannounced_ && !hasAnnounced_) return failure(*unannounced_);
    const auto done = static_cast<std::size_t>(&step - all.data()) + 1;
    if (options_.progressed) options_.progressed(done, all.size(), nameOf(step));
  }
  if (journal_ != nullptr) {
    const bool isRecorded = journal_->finish();
    addOutcomes(isRecorded, before, diskUsage(all));
  }
  return std::move(report_);
}

std::vector<DockerCleanupRun::Step> DockerCleanupRun::steps() const {
  std::vector<Step> all;
  all.reserve(plan_.targets.size() + 1);
  for (const DockerRetryTarget& each : plan_.targets) {
    const bool isNamed = isCommandTarget(each.resource, each.target.commandTarget);
    all.push_back(
        {each.resource, each.scope, each.target,
         isNamed ? DockerCommands::removalOf(each.resource, each.target.commandTarget) : std::vector<std::string>(),
         &each, nullptr});
  }
  if (plan_.prune) {
    DockerCleanupTarget cache{std::string(pruneTarget), titleKey(DockerResourceKind::buildCache),
                              std::string(buildCacheLocation)};
    cache.sizeBytes = sumOf(plan_.prune->reviewedTargets);
    all.push_back({DockerResourceKind::buildCache, plan_.prune->scope, std::move(cache),
                   DockerCommands::pruneBuildCache(), nullptr, &*plan_.prune});
  }
  return all;
}

/// What was refused before counts as failed, too. It is in the history so that this is the run that a retry means, but
/// without its target: it has to be reviewed anew. For a name that can be none the history has no place.
Outcome<void, RecoveryStoreError> DockerCleanupRun::keepRefused() {
  std::vector<CleaningHistoryItem> items;
  for (const DockerCleanupFailure& failed : plan_.refused) {
    ++failedCount_[failed.resource];
    report_.result.failedTargets.push_back({failed.target, failed.target, {}});
    report_.failures.push_back(failed);
    const bool isPrune = failed.resource == DockerResourceKind::buildCache;
    if (!isPrune && !isCommandTarget(failed.resource, failed.target)) continue;
    CleaningHistoryItem& item = items.emplace_back();
    item.id = services_.random.uuid();
    item.name = isPrune ? services_.texts(titleKey(failed.resource)) : failed.target;
    item.originalPath =
        FilePath{isPrune ? std::string(buildCacheLocation) : historyLocation(failed.resource, failed.target)};
    fail(item, failed.refusal);
  }
  if (journal_ == nullptr || items.empty()) return {};
  auto recorded = journal_->recordUntried(items);
  report_.result.historyItems = std::move(items);
  return recorded;
}

void DockerCleanupRun::take(const Step& step) {
  if (step.command.empty()) return keepFailed(step, {"docker.failure.invalidName"});
  if (journal_ == nullptr) {
    if (const auto refused = refusal(step)) return keepFailed(step, *refused);
    if (!step.isPrune()) report_.wouldRemove.targets.push_back(*step.object);
    if (step.isPrune()) report_.wouldRemove.prune = plan_.prune;
    return;
  }
  if (unannounced_) return keepFailed(step, {"docker.failure.historyUnavailable"});
  CleaningHistoryItem item = itemOf(step);
  const auto announced = journal_->announce(item, withName(step.command));
  if (!announced) {
    unannounced_ = announced.error();
    return keepFailed(step, {"docker.failure.historyUnavailable"});
  }
  hasAnnounced_ = true;
  remove(step, std::move(item));
}

std::optional<DockerRefusal> DockerCleanupRun::refusal(const Step& step) const {
  if (unverifiable_.contains(step.resource)) return DockerRefusal{"docker.failure.unverifiable"};
  const DockerEngine engine = engineOf(step.scope);
  return step.isPrune() ? refusalNow(engine, *step.prune) : refusalNow(engine, *step.object);
}

std::string DockerCleanupRun::nameOf(const Step& step) const {
  return step.isPrune() ? services_.texts(step.target.displayName) : withReplacedInvalidUtf8(step.target.displayName);
}

CleaningHistoryItem DockerCleanupRun::itemOf(const Step& step) const {
  CleaningHistoryItem item;
  item.id = services_.random.uuid();
  item.name = nameOf(step);
  item.originalPath = FilePath{step.isPrune() ? std::string(buildCacheLocation)
                                              : historyLocation(step.resource, step.target.commandTarget)};
  item.size = step.target.sizeBytes;
  if (step.isPrune()) {
    item.dockerOperation = *step.prune;
  } else {
    item.dockerTarget = *step.object;
  }
  return item;
}

void DockerCleanupRun::fail(CleaningHistoryItem& item, const DockerRefusal& refusal) const {
  item.outcome = CleaningHistoryItemOutcome::failed;
  item.failureReason = services_.texts(recordKeyOf(refusal));
  item.failureCategory = refusal.category;
}

/// From the last look at the target to its receipt.
void DockerCleanupRun::remove(const Step& step, CleaningHistoryItem item) {
  auto refused = refusal(step);
  if (!refused) refused = step.isPrune() ? pruned(step, item) : removed(step);
  if (!refused || !refused->isUncertain) item.pendingIrreversible.reset();
  if (refused) {
    fail(item, *refused);
    keepFailed(step, *refused);
  } else {
    item.outcome = CleaningHistoryItemOutcome::removed;
    item.failureReason.reset();
    keepRemoved(step, item.size);
  }
  journal_->record(item);
  report_.result.historyItems.push_back(std::move(item));
}

/// Runs the command and looks again, after which no more of a kind is removed that cannot be looked for; why the target
/// does not count as removed. What the client says of itself decides nothing: it may fail with the object gone, and
/// what one began that did not end by itself can still happen.
std::optional<DockerRefusal> DockerCleanupRun::removed(const Step& step) {
  constexpr std::int32_t firstStatusOfSignals = 128;
  const DockerEngine engine = engineOf(step.scope);
  const CommandResult done = engine.ask(step.command);
  const bool saidNo = !done.hasSucceeded() && done.exitCode >= 0 && done.exitCode < firstStatusOfSignals;
  DockerPresence presence = presenceOf(engine, *step.object);
  if (presence == DockerPresence::unknown) unverifiable_.insert(step.resource);
  if (presence == DockerPresence::absent) return std::nullopt;
  if (!done.hasSucceeded() && !saidNo) presence = DockerPresence::unknown;
  const bool isUncertain = presence == DockerPresence::unknown;
  return DockerRefusal{saidNo && !isUncertain ? "docker.failure.refused" : messageKey(presence),
                       CleanupFailureCategory::other, commandFailed(done).message, isUncertain};
}

/// The engine chooses, so the receipt has what it took: what of the reviewed the client names, and is listed no more.
/// What else is gone somebody else removed. A client that failed may have begun.
std::optional<DockerRefusal> DockerCleanupRun::pruned(const Step& step, CleaningHistoryItem& item) {
  const DockerEngine engine = engineOf(step.scope);
  const CommandResult done = engine.ask(step.command);
  const auto named = done.hasSucceeded() ? prunedBuildCache(done.output) : std::nullopt;
  auto gone = named ? goneOf(engine, *step.prune) : std::nullopt;
  if (!gone)
    return DockerRefusal{messageKey(DockerPresence::unknown), CleanupFailureCategory::other,
                         commandFailed(done).message, true};
  std::erase_if(*gone, [&](const DockerCleanupTarget& each) { return !isNamedIn(*named, each); });
  report_.prunedCount = std::ssize(*gone);
  item.size = sumOf(*gone);
  return std::nullopt;
}

void DockerCleanupRun::keepFailed(const Step& step, const DockerRefusal& refusal) {
  ++failedCount_[step.resource];
  report_.result.failedTargets.push_back(step.target);
  report_.failures.push_back({step.target.commandTarget, step.resource, refusal});
}

void DockerCleanupRun::keepRemoved(const Step& step, std::int64_t size) {
  ++removedCount_[step.resource];
  addSize(removedBytes_[step.resource], size);
  report_.result.successfulTargets.push_back(step.target);
  report_.result.successfulTargets.back().sizeBytes = size;
}

std::optional<DockerDiskUsage> DockerCleanupRun::diskUsage(const std::vector<Step>& steps) const {
  return journal_ != nullptr && !steps.empty() ? diskUsageOf(engineOf(steps.front().scope)) : std::nullopt;
}

void DockerCleanupRun::addOutcomes(bool isRecorded, const std::optional<DockerDiskUsage>& before,
                                   const std::optional<DockerDiskUsage>& after) {
  const Date now = wholeSeconds(services_.clock.now());
  for (const DockerResourceKind kind : allDockerResourceKinds) {
    DockerCleanupOutcome outcome{.id = services_.random.uuid(), .resource = kind, .completedAt = now};
    outcome.successfulCount = removedCount_[kind];
    outcome.failedCount = failedCount_[kind];
    if (outcome.successfulCount + outcome.failedCount == 0) continue;
    const auto freed = freedBytes(before, after, kind);
    const bool hasRemoved = outcome.successfulCount > 0;
    outcome.predictedBytes = removedBytes_[kind];
    outcome.isMeasured = hasRemoved && freed && *freed >= 0;
    outcome.usageGrew = hasRemoved && freed && *freed < 0;
    outcome.measurementUnavailable = hasRemoved && !freed;
    outcome.reclaimedBytes = outcome.isMeasured ? *freed : outcome.predictedBytes;
    outcome.historyWasRecorded = isRecorded;
    report_.outcomes.push_back(outcome);
  }
}

}  // namespace quorvane
