#pragma once

#include "quorvane/scan/DiskScanner.h"
#include "quorvane/scan/ScanGround.h"

#include <atomic>
#include <cstddef>
#include <map>
#include <optional>
#include <span>
#include <string>
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

  struct Found {
    ScanCandidate candidate;
    std::size_t location;  ///< of its place in the ledger
  };

  bool performStep(ScanStep step);
  std::vector<Found> findAll(ScanStep step);
  bool asksFor(const LocationRule& rule) const;
  /// Measures some of what the step found, all at once, and makes items of it; false once cancelled. `done` counts what
  /// is measured already.
  bool measure(ScanStep step, std::span<const Found> found, std::size_t done, std::size_t count);
  WalkRequest walkRequest(ScanStep step, std::span<const Found> found, std::size_t done, std::size_t count);

  void keep(const Found& found, const TreeOutcome& outcome);
  ScanItem item(const Found& found, const TreeMeasurement& tree);
  void noteCoverage(const Found& found, const TreeMeasurement& tree);
  void noteFailure(const Found& found, PosixError error);

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

  ScanGround ground_;
  std::optional<std::uint32_t> homeOwner_;

  std::atomic<std::int64_t> inspectedItemCount_ = 0;
  std::int64_t finishedWalksCount_ = 0;
};

}  // namespace quorvane
