#pragma once

#include "quorvane/core/InUseIndex.h"
#include "quorvane/core/ScanCoverage.h"
#include "quorvane/scan/DiskScanner.h"
#include "quorvane/scan/LocationFindings.h"
#include "quorvane/scan/backups/MobileBackupCatalog.h"
#include "quorvane/scan/worktrees/WorktreeGitInspector.h"

#include <map>
#include <optional>
#include <vector>

namespace quorvane {

/// What is said of a candidate once it was measured.
struct ItemJudgement {
  ItemVerdict verdict;
  std::vector<ScanCoverageNote> notes;  ///< with the candidate's path
  std::optional<MobileBackupMetadata> backupMetadata;
};

/// Says how safe what was found and measured is. Reads the process table and asks for git at most once, when the first
/// candidate needs it. Belongs to one scan and one thread.
class ItemJudge {
 public:
  /// Everything handed over outlives the judge. `now` is the moment that ages are counted to.
  ItemJudge(const ScanServices& services, const ScanSettings& settings, Date now);

  ItemJudgement judge(const ScanCandidate& candidate, const TreeMeasurement& tree, StopToken stop);

  /// Whether a running process uses this canonical path.
  bool isInUse(const FilePath& canonicalPath) { return inUse().isInUse(canonicalPath); }

  /// What a person should know of the judgements made so far.
  std::vector<ScanCoverageNote> notices() const;

 private:
  ItemJudgement worktree(const ScanCandidate& candidate, const TreeMeasurement& tree, StopToken stop);
  ItemJudgement deviceBackup(const ScanCandidate& candidate);
  ItemVerdict build(const ScanCandidate& candidate, const TreeMeasurement& tree) const;
  bool isHeldBack(const ScanCandidate& candidate) const;
  const std::vector<MobileBackupRecord>& recordsIn(const FoundFolder& folder);

  const InUseIndex& inUse();
  const WorktreeGitInspector& worktrees();

  const ScanServices& services_;
  const ScanSettings& settings_;
  const Date now_;
  MobileBackupCatalog backups_;
  std::optional<WorktreeGitInspector> worktrees_;
  std::optional<InUseIndex> inUse_;
  std::map<const FoundFolder*, std::vector<MobileBackupRecord>> backupRecords_;
};

}  // namespace quorvane
