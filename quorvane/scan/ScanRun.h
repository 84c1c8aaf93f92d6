#pragma once

#include "quorvane/scan/CleaningSafetyPolicy.h"
#include "quorvane/scan/DiskScanner.h"
#include "quorvane/scan/InUseIndex.h"
#include "quorvane/scan/ItemVerdict.h"
#include "quorvane/scan/LocationFinder.h"
#include "quorvane/scan/MobileBackupCatalog.h"
#include "quorvane/scan/WorktreeGitInspector.h"

#include <atomic>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// One scan, from its beginning to its result. Used once.
class ScanRun {
 public:
  ScanRun(const ScanServices& services, const ScanSettings& settings, const ScanRequest& request,
          ScanPauseControl& control, const ScanProgressSink& progress);

  Outcome<ScanResult, ScanFault> perform();

 private:
  /// What measuring said about a location, beside its snapshot.
  struct Inspected {
    FilePath canonicalPath;
    Date latestModification;
  };

  /// The candidates of one step, each with the place of its location in the ledger.
  struct StepFindings {
    std::vector<ScanCandidate> candidates;
    std::vector<std::size_t> locations;
    std::size_t done = 0;
  };

  bool performStep(ScanStep step);
  void findAll(ScanStep step, StepFindings& findings);
  bool asksFor(const LocationRule& rule) const;
  bool measureAll(ScanStep step, StepFindings& findings);
  /// Measures some of the candidates at once and makes items of them; false once cancelled.
  bool measure(ScanStep step, StepFindings& findings, std::size_t first, std::size_t count);
  WalkRequest walkRequest(ScanStep step, StepFindings& findings, std::size_t first);

  void keep(const ScanCandidate& candidate, std::size_t location, const TreeOutcome& outcome);
  ScanItem item(const ScanCandidate& candidate, std::size_t location, const TreeMeasurement& tree);
  ItemVerdict verdict(const ScanCandidate& candidate, std::size_t location, const TreeMeasurement& tree,
                      ScanItem& item);
  ItemVerdict worktreeVerdict(const ScanCandidate& candidate, std::size_t location, const TreeMeasurement& tree);
  ItemVerdict backupVerdict(const ScanCandidate& candidate, ScanItem& item);
  bool holdsLocalHistory(const ScanCandidate& candidate) const;
  void noteCoverage(const ScanCandidate& candidate, std::size_t location, const TreeMeasurement& tree);
  void noteFailure(const ScanCandidate& candidate, std::size_t location, PosixError error);

  const InUseIndex& inUse();
  const WorktreeGitInspector& worktrees();
  void verify();
  ScanResult finished(Date startedAt);
  void noteSeen(std::int64_t count);
  void report(const ScanStepProgress& step, double fraction, std::string location);

  const ScanServices& services_;
  const ScanSettings& settings_;
  const ScanRequest& request_;
  ScanPauseControl& control_;
  const ScanProgressSink& progress_;

  ScanCoverageLedger coverage_;  // before what writes its notices while it is made
  std::vector<ScanItem> items_;
  std::map<FilePath, Inspected> inspected_;

  const LocationTable& table_;
  LocationFolders folders_;
  Date now_;
  ScanScope scope_;
  LocationFinder finder_;
  CleaningSafetyPolicy policy_;
  std::optional<WorktreeGitInspector> worktrees_;  ///< made when the first worktree is met: asking for git takes time
  MobileBackupCatalog backups_;
  std::optional<InUseIndex> inUse_;
  std::map<const FoundFolder*, std::vector<MobileBackupRecord>> backupRecords_;
  std::optional<std::uint32_t> homeOwner_;

  std::atomic<std::int64_t> inspectedItemCount_ = 0;
  std::int64_t finishedWalksCount_ = 0;
};

}  // namespace quorvane
