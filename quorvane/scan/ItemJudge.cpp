#include "quorvane/scan/ItemJudge.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace quorvane {

namespace {

constexpr std::chrono::seconds recentBuild(86'400);

ItemVerdict verdictOf(WorktreeGitState state) {
  switch (state) {
    case WorktreeGitState::merged: return {SafetyLevel::safe, "reason.aiWorktree.merged"};
    case WorktreeGitState::committed: return {SafetyLevel::review, "reason.aiWorktree.committed"};
    case WorktreeGitState::dirty: return {SafetyLevel::review, "reason.aiWorktree.dirty"};
    case WorktreeGitState::unknown: return {SafetyLevel::review, "reason.aiWorktree"};
  }
  std::unreachable();
}

}  // namespace

ItemJudge::ItemJudge(const ScanServices& services, const ScanSettings& settings, Date now)
    : services_(services), settings_(settings), now_(now), backups_(services.fileSystem, services.clock) {}

ItemJudgement ItemJudge::judge(const ScanCandidate& candidate, const TreeMeasurement& tree, StopToken stop) {
  ItemJudgement found{.verdict = candidate.verdict, .notes = {}, .backupMetadata = {}};
  switch (candidate.rule->kind) {
    case LocationKind::worktree: found = worktree(candidate, tree, std::move(stop)); break;
    case LocationKind::deviceBackup: found = deviceBackup(candidate); break;
    case LocationKind::build: found.verdict = build(candidate, tree); break;
    case LocationKind::cache:
    case LocationKind::anyCache:
    case LocationKind::log:
    case LocationKind::archive:
    case LocationKind::old: break;
  }
  // Whoever tagged a folder with a repository in it kept work out of backups; a tool would have made no repository.
  const bool isDoubtful = candidate.isVouchedByTag && tree.watchedCount > 0;
  if (isDoubtful && found.verdict.safety == SafetyLevel::safe)
    found.verdict = {SafetyLevel::review, "reason.unknownCache"};
  found.verdict = limitedByMeasurement(std::move(found.verdict), tree);
  return found;
}

ItemVerdict ItemJudge::build(const ScanCandidate& candidate, const TreeMeasurement& tree) const {
  if (tree.newestModification.date() > now_ - recentBuild)  // the other difference can be beyond a duration's reach
    return {SafetyLevel::blocked, "reason.recentDerivedDataProtected"};
  if (candidate.verdict.safety == SafetyLevel::safe && isHeldBack(candidate))
    return {SafetyLevel::review, std::string(candidate.rule->heldBack.reasonKey)};
  return candidate.verdict;
}

bool ItemJudge::isHeldBack(const ScanCandidate& candidate) const {
  const std::string entry(candidate.rule->heldBack.entry);
  if (entry.empty()) return false;
  const auto folder = services_.fileSystem.openFolder(candidate.folder->descriptor.number(), candidate.name.c_str());
  return folder && services_.fileSystem.status(folder->number(), entry.c_str());
}

ItemJudgement ItemJudge::worktree(const ScanCandidate& candidate, const TreeMeasurement& tree, StopToken stop) {
  const WorktreeQuery query{candidate.path(), inUse().standsIn(candidate.canonicalPath())};
  WorktreeFinding found = worktrees().inspect(query, std::move(stop));
  // Git says nothing of a repository that stands in a folder it ignores.
  if (tree.watchedCount > 1) {
    found.notes.push_back({.key = "coverage.note.nestedRepository"});
    if (found.state == WorktreeGitState::merged) found.state = WorktreeGitState::unknown;
  }
  for (ScanCoverageNote& note : found.notes) note.path = candidate.path();
  return {.verdict = verdictOf(found.state), .notes = std::move(found.notes), .backupMetadata = {}};
}

ItemJudgement ItemJudge::deviceBackup(const ScanCandidate& candidate) {
  const auto& records = recordsIn(*candidate.folder);
  const auto record = std::ranges::find(records, candidate.path(), &MobileBackupRecord::url);
  if (record == records.end()) return {{SafetyLevel::blocked, "backup.reason.unknown"}, {}, {}};
  return {verdictOf(*record, now_), {}, record->metadata};
}

/// Which backup is the newest of its device shows only when all of them are read.
const std::vector<MobileBackupRecord>& ItemJudge::recordsIn(const FoundFolder& folder) {
  const auto [known, isNew] = backupRecords_.try_emplace(&folder);
  if (isNew) {
    auto records = backups_.records({folder.descriptor.number(), folder.path});
    if (records) known->second = *std::move(records);
  }
  return known->second;
}

std::vector<ScanCoverageNote> ItemJudge::notices() const {
  std::vector<ScanCoverageNote> notices;
  if (worktrees_ && !worktrees_->isGitAvailable()) notices.push_back({.key = "coverage.notice.gitUnavailable"});
  if (!inUse_) return notices;
  if (!inUse_->couldReadProcesses()) notices.push_back({.key = "coverage.notice.processTableUnavailable"});
  const auto& programs = inUse_->uninspectable();
  if (!programs.empty())
    notices.push_back({.key = "coverage.notice.processesNotInspectable",
                       .count = static_cast<std::int64_t>(programs.size()),
                       .names = programs});
  return notices;
}

const InUseIndex& ItemJudge::inUse() {
  if (!inUse_) inUse_.emplace(services_.processReader.read());
  return *inUse_;
}

const WorktreeGitInspector& ItemJudge::worktrees() {
  if (!worktrees_) worktrees_.emplace(services_.fileSystem, services_.processRunner, settings_.gitPrograms);
  return *worktrees_;
}

}  // namespace quorvane
