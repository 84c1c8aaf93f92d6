#pragma once

#include "quorvane/scan/ScanGround.h"
#include "quorvane/scan/ScanSelectionPreflight.h"

#include <map>
#include <optional>
#include <vector>

namespace quorvane {

/// What the tables of a scan say of places now, for places that were reviewed before. Measures nothing.
///
/// Belongs to one thread. Not all of it is as old as the object: ages count to its beginning, recent writes to now.
class ReviewedPlaces {
 public:
  /// Looks through all locations now. Everything handed over outlives the object.
  ReviewedPlaces(const ScanServices& services, const ScanSettings& settings);

  /// What a full scan would make an item of at this canonical path; none where it makes none.
  const ScanCandidate* candidateAt(const FilePath& canonicalPath) const;

  /// Why a place that one of the locations holds must not become an item.
  std::optional<ScanCoverageReason> reasonLeftOut(const FilePath& canonicalPath) const;

  /// Whether the path lies inside a cleaning root: `CleaningSafetyPolicy`.
  bool allowsCleaning(const FilePath& path) const { return ground_.policy.allowsCleaning(path); }
  bool allowsCleaning(const FilePath& path, const FilePath& resolved) const {
    return ground_.policy.allowsCleaning(path, resolved);
  }

  /// What a device backup says of itself; nothing for any other candidate.
  std::optional<MobileBackupMetadata> backupMetadata(const ScanCandidate& candidate);

  /// How safe a candidate is that was measured now.
  ItemVerdict judged(const ScanCandidate& candidate, const TreeMeasurement& tree, StopToken stop);

  /// Why an item that was reviewed as safe should be left alone for the moment; whether it is in use is not looked at.
  std::optional<ScanSelectionPreflight::Demotion> demotion(const ScanItem& item, const ScanCandidate& candidate,
                                                           const TreeMeasurement& tree) const;

 private:
  void noteLeftOut(const std::vector<ScanCoverageEntry>& leftOut);
  FilePath canonicalPathOf(const FilePath& path);

  const ScanServices& services_;
  std::vector<ScanCoverageNote> notices_;
  ScanGround ground_;
  std::map<FilePath, ScanCandidate> candidates_;
  std::map<FilePath, ScanCoverageReason> leftOut_;
  std::map<FilePath, FilePath> canonicalFolders_;
};

}  // namespace quorvane
