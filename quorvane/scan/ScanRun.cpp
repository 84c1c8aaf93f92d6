#include "quorvane/scan/ScanRun.h"

#include "quorvane/scan/ScanSelectionPreflight.h"

#include <algorithm>
#include <cerrno>
#include <set>

namespace quorvane {

namespace {

constexpr std::chrono::seconds recentBuild(86'400);
constexpr std::size_t mostUnreadablePaths = 1000;

ScanCoverageReason reasonOf(PosixError error) {
  switch (error.code) {
    case ENOENT:
    case ENOTDIR:
    case ELOOP: return ScanCoverageReason::changing;
    case EACCES:
    case EPERM: return ScanCoverageReason::permissionDenied;
    default: return ScanCoverageReason::failed;
  }
}

FilePath cachesRootOf(const ScanSettings& settings) {
  return settings.layout == HomeLayout::macos ? joined(settings.folders.home, "Library/Caches")
                                              : settings.folders.cache;
}

}  // namespace

ScanRun::ScanRun(const ScanServices& services, const ScanSettings& settings, const ScanRequest& request,
                 ScanPauseControl& control, const ScanProgressSink& progress)
    : services_(services),
      settings_(settings),
      request_(request),
      control_(control),
      progress_(progress),
      table_(locationTable(settings.layout)),
      folders_(settings, services.fileSystem),
      now_(services.clock.now()),
      scope_(scanScope(services, settings, coverage_.notices)),
      finder_(services.fileSystem, table_, folders_, scope_, now_),
      policy_(services.fileSystem, cleaningRules(settings, folders_)),
      backups_(services.fileSystem, services.clock) {}

Outcome<ScanResult, ScanFault> ScanRun::perform() {
  const Date startedAt = now_;
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
  StepFindings findings;
  findAll(step, findings);
  if (!findings.candidates.empty() && step == ScanStep::worktrees && !worktrees().isGitAvailable())
    coverage_.notices.push_back({std::nullopt, "coverage.notice.gitUnavailable", std::nullopt, {}});
  return measureAll(step, findings);
}

void ScanRun::findAll(ScanStep step, StepFindings& findings) {
  for (const LocationRule& rule : table_.rules) {
    if (rule.step != step) continue;
    if (!asksFor(rule)) {
      coverage_.entries.push_back({.path = joined(folders_.at(rule.base), rule.path),
                                   .category = rule.category,
                                   .status = ScanCoverageStatus::skipped,
                                   .reason = ScanCoverageReason::categoryNotAsked,
                                   .itemCount = 0,
                                   .unreadablePaths = {},
                                   .notes = {}});
      continue;
    }
    LocationFindings found = finder_.find(rule);
    findings.locations.resize(findings.locations.size() + found.candidates.size(), coverage_.entries.size());
    std::ranges::move(found.candidates, std::back_inserter(findings.candidates));
    coverage_.entries.push_back(std::move(found.location));
    std::ranges::move(found.leftOut, std::back_inserter(coverage_.entries));
  }
}

/// A rule for application caches finds those of browsers too.
bool ScanRun::asksFor(const LocationRule& rule) const {
  return request_.asksFor(rule.category) ||
         (rule.category == ScanCategory::applicationCache && request_.asksFor(ScanCategory::browserCache));
}

bool ScanRun::measureAll(ScanStep step, StepFindings& findings) {
  const std::size_t count = findings.candidates.size();
  // Asking git about a worktree is part of its entry, so each is finished before the next one is begun.
  const std::size_t atOnce = step == ScanStep::worktrees ? 1 : std::max<std::size_t>(count, 1);
  for (std::size_t first = 0; first < count; first += atOnce)
    if (!measure(step, findings, first, std::min(atOnce, count - first))) return false;
  return true;
}

bool ScanRun::measure(ScanStep step, StepFindings& findings, std::size_t first, std::size_t count) {
  std::vector<TreeRoot> roots;
  for (std::size_t i = first; i < first + count; ++i)
    roots.push_back({findings.candidates[i].folder->descriptor.number(), findings.candidates[i].name});
  const auto outcomes = services_.walker.measure(roots, walkRequest(step, findings, first));
  if (!control_.waitWhilePaused()) return false;
  for (std::size_t i = 0; i < count; ++i)
    keep(findings.candidates[first + i], findings.locations[first + i], outcomes[i]);
  for (const TreeOutcome& outcome : outcomes)
    if (outcome) finishedWalksCount_ += outcome->entryCount;
  noteSeen(finishedWalksCount_);
  return true;
}

WalkRequest ScanRun::walkRequest(ScanStep step, StepFindings& findings, std::size_t first) {
  const ScanStepProgress progress = progressOf(step);
  const auto count = static_cast<double>(findings.candidates.size());
  const auto done = std::make_shared<std::atomic<std::size_t>>(first);
  const auto fraction = [progress, count, done] {
    return progress.start + progress.span * (static_cast<double>(*done) / count);
  };
  WalkRequest request;
  request.stop = control_.stopToken();
  request.begins = [this](std::size_t) { return control_.waitWhilePaused(); };
  request.advances = [this, progress, fraction](std::int64_t seen) {
    noteSeen(finishedWalksCount_ + seen);
    report(progress, fraction(), {});
  };
  request.ends = [this, progress, fraction, done, first, &findings](std::size_t index, const TreeOutcome& outcome) {
    if (!outcome && outcome.error().code == ECANCELED) return;
    ++*done;
    report(progress, fraction(), findings.candidates[first + index].path().bytes);
  };
  return request;
}

void ScanRun::keep(const ScanCandidate& candidate, std::size_t location, const TreeOutcome& outcome) {
  if (!outcome) {
    noteFailure(candidate, location, outcome.error());
    return;
  }
  noteCoverage(candidate, location, *outcome);
  ScanItem made = item(candidate, location, *outcome);
  if (!request_.asksFor(made.category)) return;
  inspected_[made.url.path] = {candidate.canonicalPath(), outcome->newestModification.date()};
  ++coverage_.entries[location].itemCount;
  items_.push_back(std::move(made));
}

ScanItem ScanRun::item(const ScanCandidate& candidate, std::size_t location, const TreeMeasurement& tree) {
  ScanItem made{.id = services_.random.uuid(),
                .url = {candidate.path()},
                .displayName = candidate.displayName,
                .category = candidate.category,
                .safety = SafetyLevel::blocked,
                .reasonKey = {},
                .size = tree.allocatedBytes,
                .isSelected = false,
                .snapshot = std::nullopt,
                .backupMetadata = std::nullopt};
  ItemVerdict found = verdict(candidate, location, tree, made);
  made.safety = found.safety;
  made.reasonKey = std::move(found.reasonKey);
  made.snapshot = snapshotOf(tree, candidate.canonicalPath());
  const bool startsUnselected = candidate.rule->kind == LocationKind::worktree;
  made.isSelected = made.safety == SafetyLevel::safe && !startsUnselected && policy_.allowsCleaning(made.url.path);
  return made;
}

ItemVerdict ScanRun::verdict(const ScanCandidate& candidate, std::size_t location, const TreeMeasurement& tree,
                             ScanItem& item) {
  ItemVerdict found{candidate.safety, candidate.reasonKey};
  const LocationKind kind = candidate.rule->kind;
  if (kind == LocationKind::worktree) found = worktreeVerdict(candidate, location, tree);
  if (kind == LocationKind::deviceBackup) found = backupVerdict(candidate, item);
  if (kind == LocationKind::build || kind == LocationKind::ideCache) {
    if (tree.newestModification.date() > now_ - recentBuild)  // the other difference can be beyond a duration's reach
      return {SafetyLevel::blocked, "reason.recentDerivedDataProtected"};
  }
  if (kind == LocationKind::ideCache && found.safety == SafetyLevel::safe && holdsLocalHistory(candidate))
    found = {SafetyLevel::review, "reason.localHistory"};
  // Whoever tagged a folder with a repository in it kept work out of backups; a tool would have made no repository.
  if (found.reasonKey == "reason.cacheTag" && tree.gitCount > 0) found = {SafetyLevel::review, "reason.unknownCache"};
  return limitedByMeasurement(std::move(found), tree);
}

bool ScanRun::holdsLocalHistory(const ScanCandidate& candidate) const {
  const auto folder = services_.fileSystem.openFolder(candidate.folder->descriptor.number(), candidate.name.c_str());
  return folder && services_.fileSystem.status(folder->number(), "LocalHistory");
}

ItemVerdict ScanRun::worktreeVerdict(const ScanCandidate& candidate, std::size_t location,
                                     const TreeMeasurement& tree) {
  const WorktreeQuery query{candidate.path(), inUse().standsIn(candidate.canonicalPath())};
  WorktreeFinding found = worktrees().inspect(query, control_.stopToken());
  // Git says nothing of a repository that stands in a folder it ignores.
  if (tree.gitCount > 1) {
    found.notes.push_back({std::nullopt, "coverage.note.nestedRepository", std::nullopt, {}});
    if (found.state == WorktreeGitState::merged) found.state = WorktreeGitState::unknown;
  }
  for (ScanCoverageNote& note : found.notes) {
    note.path = candidate.path();
    coverage_.entries[location].notes.push_back(std::move(note));
  }
  switch (found.state) {
    case WorktreeGitState::merged: return {SafetyLevel::safe, "reason.aiWorktree.merged"};
    case WorktreeGitState::committed: return {SafetyLevel::review, "reason.aiWorktree.committed"};
    case WorktreeGitState::dirty: return {SafetyLevel::review, "reason.aiWorktree.dirty"};
    case WorktreeGitState::unknown: return {SafetyLevel::review, "reason.aiWorktree"};
  }
  std::unreachable();
}

ItemVerdict ScanRun::backupVerdict(const ScanCandidate& candidate, ScanItem& item) {
  const FoundFolder& folder = *candidate.folder;
  const auto [known, isNew] = backupRecords_.try_emplace(&folder);
  if (isNew)
    known->second =
        backups_.records({folder.descriptor.number(), folder.path}).value_or(std::vector<MobileBackupRecord>{});
  const auto record = std::ranges::find(known->second, candidate.path(), &MobileBackupRecord::url);
  if (record == known->second.end()) return {SafetyLevel::blocked, "backup.reason.unknown"};
  item.backupMetadata = record->metadata;
  if (record->metadata.deviceName) item.displayName = *record->metadata.deviceName;
  MobileBackupSafety found = scanReason(*record, now_);
  return {found.safety, std::move(found.reasonKey)};
}

void ScanRun::noteCoverage(const ScanCandidate& candidate, std::size_t location, const TreeMeasurement& tree) {
  ScanCoverageEntry& entry = coverage_.entries[location];
  for (const std::string& relative : tree.unreadable)
    if (entry.unreadablePaths.size() < mostUnreadablePaths)
      entry.unreadablePaths.push_back(joined(candidate.path(), relative));
  if (tree.isLowerBound()) {
    entry.status = ScanCoverageStatus::partial;
    entry.reason = tree.unreadableCount > 0     ? ScanCoverageReason::permissionDenied
                   : !tree.mountsInside.empty() ? ScanCoverageReason::mountPoint
                                                : ScanCoverageReason::changing;
  }
  if (homeOwner_ && tree.root.owner != *homeOwner_)
    entry.notes.push_back({candidate.path(), "coverage.note.foreignOwner", std::nullopt, {}});
}

void ScanRun::noteFailure(const ScanCandidate& candidate, std::size_t location, PosixError error) {
  const ScanCoverageReason reason = reasonOf(error);
  ScanCoverageEntry entry{.path = candidate.path(),
                          .category = candidate.category,
                          .status = ScanCoverageStatus::unreadable,
                          .reason = reason,
                          .itemCount = 0,
                          .unreadablePaths = {},
                          .notes = {}};
  if (reason != ScanCoverageReason::changing) entry.unreadablePaths.push_back(candidate.path());
  coverage_.entries[location].status = ScanCoverageStatus::partial;
  coverage_.entries[location].reason = reason;
  coverage_.entries.push_back(std::move(entry));
}

const InUseIndex& ScanRun::inUse() {
  if (!inUse_) {
    inUse_.emplace(services_.processReader.read());
    const auto& programs = inUse_->uninspectable();
    if (!inUse_->couldReadProcesses())
      coverage_.notices.push_back({std::nullopt, "coverage.notice.processTableUnavailable", std::nullopt, {}});
    if (!programs.empty())
      coverage_.notices.push_back({std::nullopt, "coverage.notice.processesNotInspectable",
                                   static_cast<std::int64_t>(programs.size()), programs});
  }
  return *inUse_;
}

const WorktreeGitInspector& ScanRun::worktrees() {
  if (!worktrees_) worktrees_.emplace(services_.fileSystem, services_.processRunner, settings_.gitPrograms);
  return *worktrees_;
}

void ScanRun::verify() {
  const auto isAtRisk = [](const ScanItem& item) { return item.isSelected && item.safety == SafetyLevel::safe; };
  if (std::ranges::none_of(items_, isAtRisk)) return;
  items_ = ScanSelectionPreflight::checked(
      std::move(items_),
      {.now = now_,
       .cachesRoot = cachesRootOf(settings_),
       .latestModification = [this](const FilePath& path) { return inspected_.at(path).latestModification; },
       .isInUse = [this](const FilePath& path) { return inUse().isInUse(inspected_.at(path).canonicalPath); }});
}

ScanResult ScanRun::finished(Date startedAt) {
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
