#include "quorvane/scan/ScanRun.h"

#include "quorvane/scan/CacheDirectoryTag.h"
#include "quorvane/scan/ScanSelectionPreflight.h"

#include <algorithm>
#include <set>

namespace quorvane {

namespace {

ScanCoverageReason reasonOf(PosixError error) {
  if (error.isMissing() || error.isOtherKind()) return ScanCoverageReason::changing;
  return error.isDenied() ? ScanCoverageReason::permissionDenied : ScanCoverageReason::failed;
}

ScanCoverageReason reasonOfLowerBound(const TreeMeasurement& tree) {
  if (tree.unreadableCount > 0) return reasonOf(tree.unreadableReason);
  return tree.mountsInside.empty() ? ScanCoverageReason::changing : ScanCoverageReason::mountPoint;
}

}  // namespace

ScanRun::ScanRun(const ScanServices& services, const ScanSettings& settings, const ScanRequest& request,
                 ScanPauseControl& control, const ScanProgressSink& progress)
    : services_(services),
      settings_(settings),
      request_(request),
      control_(control),
      progress_(progress),
      ground_(services, settings, coverage_.notices) {}

Outcome<ScanResult, ScanFault> ScanRun::perform() {
  const Date startedAt = ground_.now;
  const auto home = services_.fileSystem.openStartingFolder(settings_.folders.home);
  if (!home) return failure(ScanFault::homeUnreadable);
  if (const auto status = services_.fileSystem.status(home->number())) homeOwner_ = status->owner;
  for (const ScanStep step : allCases<ScanStep>())
    if (!performStep(step)) return failure(ScanFault::cancelled);
  report(verifyingProgress, verifyingProgress.start, {});
  if (!control_.waitWhilePaused()) return failure(ScanFault::cancelled);
  verify();
  ScanResult result = finished(startedAt);
  report(finishedProgress, finishedProgress.start, {});
  return result;
}

bool ScanRun::performStep(ScanStep step) {
  report(progressOf(step), progressOf(step).start, {});
  if (!control_.waitWhilePaused()) return false;
  const std::vector<Found> found = findAll(step);
  // Asking git about a worktree is part of its entry, so each is finished before the next one is begun.
  const std::size_t atOnce = step == ScanStep::worktrees ? 1 : std::max<std::size_t>(found.size(), 1);
  for (std::size_t done = 0; done < found.size(); done += atOnce)
    if (!measure(step, std::span(found).subspan(done, atOnce), done, found.size())) return false;
  return true;
}

std::vector<ScanRun::Found> ScanRun::findAll(ScanStep step) {
  std::vector<Found> all;
  for (const LocationRule& rule : ground_.table.rules) {
    if (rule.step != step) continue;
    if (!asksFor(rule)) {
      coverage_.entries.push_back({.path = joined(ground_.folders.at(rule.base), rule.path),
                                   .category = rule.category,
                                   .status = ScanCoverageStatus::skipped,
                                   .reason = ScanCoverageReason::categoryNotAsked});
      continue;
    }
    LocationFindings findings = ground_.finder.find(rule);
    for (ScanCandidate& candidate : findings.candidates)
      all.push_back({std::move(candidate), coverage_.entries.size()});
    coverage_.entries.push_back(std::move(findings.location));
    std::ranges::move(findings.leftOut, std::back_inserter(coverage_.entries));
  }
  return all;
}

/// A rule for application caches finds those of browsers too.
bool ScanRun::asksFor(const LocationRule& rule) const {
  return request_.asksFor(rule.category) ||
         (rule.category == ScanCategory::applicationCache && request_.asksFor(ScanCategory::browserCache));
}

bool ScanRun::measure(ScanStep step, std::span<const Found> found, std::size_t done, std::size_t count) {
  std::vector<TreeRoot> roots;
  for (const Found& each : found) roots.push_back({each.candidate.folder->descriptor.number(), each.candidate.name});
  const auto outcomes = services_.walker.measure(roots, walkRequest(step, found, done, count));
  if (!control_.waitWhilePaused()) return false;
  for (std::size_t i = 0; i < found.size(); ++i) {
    keep(found[i], outcomes[i]);
    if (outcomes[i]) finishedWalksCount_ += outcomes[i]->entryCount;
  }
  noteSeen(finishedWalksCount_);
  return true;
}

WalkRequest ScanRun::walkRequest(ScanStep step, std::span<const Found> found, std::size_t done, std::size_t count) {
  struct Progress {
    std::atomic<std::size_t> done;
    std::atomic<std::size_t> current = 0;  ///< what was begun last
  };
  const auto progress = std::make_shared<Progress>(done);
  const auto tell = [this, step, found, count, progress](std::size_t index) {
    const ScanStepProgress shown = progressOf(step);
    const double share = static_cast<double>(progress->done) / static_cast<double>(count);
    report(shown, shown.start + shown.span * share, found[index].candidate.path().bytes);
  };
  WalkRequest request;
  request.watchedNames = repositoryNames;
  request.stop = control_.stopToken();
  request.begins = [this, progress](std::size_t index) {
    progress->current = index;
    return control_.waitWhilePaused();
  };
  request.advances = [this, progress, tell](std::int64_t seen) {
    noteSeen(finishedWalksCount_ + seen);
    tell(progress->current);
  };
  request.ends = [progress, tell](std::size_t index, const TreeOutcome& outcome) {
    if (!outcome && outcome.error().isCancelled()) return;
    ++progress->done;
    tell(index);
  };
  return request;
}

void ScanRun::keep(const Found& found, const TreeOutcome& outcome) {
  if (!outcome) {
    noteFailure(found, outcome.error());
    return;
  }
  noteCoverage(found, *outcome);
  ScanItem made = item(found, *outcome);
  if (!request_.asksFor(made.category)) return;
  inspected_[made.url.path] = {found.candidate.canonicalPath(), outcome->newestModification.date()};
  ++coverage_.entries[found.location].itemCount;
  items_.push_back(std::move(made));
}

ScanItem ScanRun::item(const Found& found, const TreeMeasurement& tree) {
  const ScanCandidate& candidate = found.candidate;
  ItemJudgement judgement = ground_.judge.judge(candidate, tree, control_.stopToken());
  std::ranges::move(judgement.notes, std::back_inserter(coverage_.entries[found.location].notes));
  ScanItem made{.id = services_.random.uuid(),
                .url = {candidate.path()},
                .displayName = candidate.displayName,
                .category = candidate.category,
                .safety = judgement.verdict.safety,
                .reasonKey = std::move(judgement.verdict.reasonKey),
                .size = tree.allocatedBytes,
                .isSelected = false,
                .snapshot = snapshotOf(tree, candidate.canonicalPath()),
                .backupMetadata = std::move(judgement.backupMetadata)};
  if (made.backupMetadata && made.backupMetadata->deviceName) made.displayName = *made.backupMetadata->deviceName;
  const bool startsUnselected = candidate.rule->kind == LocationKind::worktree;
  made.isSelected =
      made.safety == SafetyLevel::safe && !startsUnselected && ground_.policy.allowsCleaning(made.url.path);
  return made;
}

void ScanRun::noteCoverage(const Found& found, const TreeMeasurement& tree) {
  ScanCoverageEntry& entry = coverage_.entries[found.location];
  for (const std::string& relative : tree.unreadable) entry.addUnreadable(joined(found.candidate.path(), relative));
  if (tree.isLowerBound()) {
    entry.status = ScanCoverageStatus::partial;
    entry.reason = reasonOfLowerBound(tree);
  }
  if (homeOwner_ && tree.root.owner != *homeOwner_)
    entry.notes.push_back({.path = found.candidate.path(), .key = "coverage.note.foreignOwner"});
}

void ScanRun::noteFailure(const Found& found, PosixError error) {
  ScanCoverageEntry entry{.path = found.candidate.path(),
                          .category = found.candidate.category,
                          .status = ScanCoverageStatus::unreadable,
                          .reason = reasonOf(error)};
  if (entry.reason != ScanCoverageReason::changing) entry.addUnreadable(entry.path);
  ScanCoverageEntry& location = coverage_.entries[found.location];
  location.status = ScanCoverageStatus::partial;
  location.reason = entry.reason;
  coverage_.entries.push_back(std::move(entry));
}

void ScanRun::verify() {
  const auto isAtRisk = [](const ScanItem& item) { return item.isSelected && item.safety == SafetyLevel::safe; };
  if (std::ranges::none_of(items_, isAtRisk)) return;
  items_ = ScanSelectionPreflight::checked(
      std::move(items_),
      {.now = ground_.now,
       .cachesRoot = ground_.cachesRoot,
       .latestModification = [this](const FilePath& path) { return inspected_.at(path).latestModification; },
       .isInUse = [this](const FilePath& path) { return ground_.judge.isInUse(inspected_.at(path).canonicalPath); }});
}

ScanResult ScanRun::finished(Date startedAt) {
  std::ranges::move(ground_.judge.notices(), std::back_inserter(coverage_.notices));
  std::vector<FilePath> unreadable;
  std::set<FilePath> known;  // one folder can be the way to many locations
  for (const ScanCoverageEntry& entry : coverage_.entries)
    std::ranges::copy_if(entry.unreadablePaths, std::back_inserter(unreadable),
                         [&](const FilePath& path) { return known.insert(path).second; });
  return {.startedAt = wholeSeconds(startedAt),
          .finishedAt = wholeSeconds(services_.clock.now()),
          .items = std::move(items_),
          .unreadablePaths = std::move(unreadable),
          .coverage = std::move(coverage_)};
}

/// The walking threads tell it in no particular order; it only grows.
void ScanRun::noteSeen(std::int64_t count) {
  std::int64_t known = inspectedItemCount_;
  while (known < count && !inspectedItemCount_.compare_exchange_weak(known, count)) {}
}

void ScanRun::report(const ScanStepProgress& step, double fraction, std::string location) {
  if (!progress_) return;
  progress_({.progress = fraction,
             .statusKey = std::string(step.statusKey),
             .activity = ScanActivitySnapshot{std::move(location), inspectedItemCount_}});
}

}  // namespace quorvane
