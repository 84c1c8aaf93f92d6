#include "quorvane/scan/ReviewedPlaces.h"

#include <utility>

namespace quorvane {

ReviewedPlaces::ReviewedPlaces(const ScanServices& services, const ScanSettings& settings)
    : services_(services), ground_(services, settings, notices_) {
  for (const LocationRule& rule : ground_.table.rules) {
    LocationFindings findings = ground_.finder.find(rule);
    for (ScanCandidate& candidate : findings.candidates) {
      FilePath path = candidate.canonicalPath();
      candidates_.emplace(std::move(path), std::move(candidate));
    }
    noteLeftOut(findings.leftOut);
  }
}

void ReviewedPlaces::noteLeftOut(const std::vector<ScanCoverageEntry>& leftOut) {
  for (const ScanCoverageEntry& entry : leftOut) leftOut_.emplace(canonicalPathOf(entry.path), entry.reason);
}

/// Many of them lie in the same folder.
FilePath ReviewedPlaces::canonicalPathOf(const FilePath& path) {
  const FilePath folder = parentOf(path);
  const auto [known, isNew] = canonicalFolders_.try_emplace(folder, folder);
  if (isNew) {
    if (auto resolved = services_.fileSystem.resolved(folder)) known->second = *std::move(resolved);
  }
  return joined(known->second, leafOf(path));
}

const ScanCandidate* ReviewedPlaces::candidateAt(const FilePath& canonicalPath) const {
  const auto found = candidates_.find(canonicalPath);
  return found == candidates_.end() ? nullptr : &found->second;
}

std::optional<ScanCoverageReason> ReviewedPlaces::reasonLeftOut(const FilePath& canonicalPath) const {
  const auto found = leftOut_.find(canonicalPath);
  return found == leftOut_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<MobileBackupMetadata> ReviewedPlaces::backupMetadata(const ScanCandidate& candidate) {
  if (candidate.rule->kind != LocationKind::deviceBackup) return std::nullopt;
  return ground_.judge.judge(candidate, {}, {}).backupMetadata;
}

ItemVerdict ReviewedPlaces::judged(const ScanCandidate& candidate, const TreeMeasurement& tree, StopToken stop) {
  return ground_.judge.judge(candidate, tree, std::move(stop)).verdict;
}

std::optional<ScanSelectionPreflight::Demotion> ReviewedPlaces::demotion(const ScanItem& item,
                                                                         const ScanCandidate& candidate,
                                                                         const TreeMeasurement& tree) const {
  ScanItem selected = item;
  selected.url = {candidate.path()};
  selected.isSelected = true;
  return ScanSelectionPreflight::demotionOf(
      selected, {.now = services_.clock.now(),
                 .cachesRoot = ground_.cachesRoot,
                 .latestModification = [&](const FilePath&) { return tree.newestModification.date(); },
                 .isInUse = [](const FilePath&) { return false; }});
}

}  // namespace quorvane
