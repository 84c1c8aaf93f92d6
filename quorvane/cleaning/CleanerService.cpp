#include "quorvane/cleaning/CleanerService.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/scan/CacheDirectoryTag.h"
#include "quorvane/scan/ReviewedPlaces.h"

#include <utility>

namespace quorvane {

namespace {

RemovalRefusal locationRefusal() { return {"cleanup.failure.location", CleanupFailureCategory::protected_}; }

RemovalRefusal refusalOf(ScanCoverageReason leftOut) {
  switch (leftOut) {
    case ScanCoverageReason::ignored: return quorvane::refusalOf(FileProtectionError::ignored);
    case ScanCoverageReason::cloud: return quorvane::refusalOf(FileProtectionError::cloud);
    case ScanCoverageReason::mountPoint: return mountRefusal();
    case ScanCoverageReason::ownData: return protectedRefusal();
    case ScanCoverageReason::read:
    case ScanCoverageReason::missing:
    case ScanCoverageReason::categoryNotAsked:
    case ScanCoverageReason::overlaps:
    case ScanCoverageReason::link:
    case ScanCoverageReason::notAFolder:
    case ScanCoverageReason::permissionDenied:
    case ScanCoverageReason::changing:
    case ScanCoverageReason::failed: return locationRefusal();
  }
  std::unreachable();
}

RemovalRefusal refusalOf(ScanSelectionPreflight::Demotion demotion) {
  using ScanSelectionPreflight::Demotion;
  switch (demotion) {
    case Demotion::running: return {reasonKey(demotion), CleanupFailureCategory::inUse};
    case Demotion::recentlyWritten: return {reasonKey(demotion), CleanupFailureCategory::changedAfterScan};
    case Demotion::systemService: return {reasonKey(demotion), CleanupFailureCategory::protected_};
  }
  std::unreachable();
}

/// Holds each reviewed item against what a scan would say of its place now.
class ItemChecks {
 public:
  ItemChecks(const ScanServices& services, const ScanSettings& settings, const std::vector<ScanItem>& items,
             StopToken stop)
      : services_(services), items_(items), stop_(std::move(stop)), places_(services, settings) {}

  /// What the item is called comes from its place, too: a record may say anything.
  RemovalRequest requestFor(const ScanItem& item) {
    const auto canonicalPath = canonicalPathOf(item.url.path);
    const ScanCandidate* candidate = canonicalPath ? places_.candidateAt(*canonicalPath) : nullptr;
    return {.id = item.id,
            .name = candidate ? candidate->displayName : withReplacedInvalidUtf8(leafOf(item.url.path)),
            .path = item.url.path,
            .size = item.size,
            .snapshot = item.snapshot,
            .backupMetadata = candidate ? places_.backupMetadata(*candidate) : std::nullopt};
  }

  std::optional<RemovalRefusal> before(std::size_t index) {
    const ScanItem& item = items_[index];
    const FilePath& path = item.url.path;
    const bool isStandard = isAbsolute(path.bytes) && path == standardised(path);
    if (item.safety == SafetyLevel::blocked || !isStandard) return protectedRefusal();
    const auto canonicalPath = canonicalPathOf(path);
    if (!canonicalPath) return locationRefusal();
    const ScanCandidate* candidate = places_.candidateAt(*canonicalPath);
    if (candidate && candidate->verdict.safety == SafetyLevel::blocked) return protectedRefusal();
    if (const auto leftOut = places_.reasonLeftOut(*canonicalPath); leftOut && !candidate) return refusalOf(*leftOut);
    if (!allowsCleaning(path, *canonicalPath, candidate)) return locationRefusal();
    return std::nullopt;  // what is no candidate any more may be gone or changed, which has yet to be seen
  }

  std::optional<RemovalRefusal> measured(std::size_t index, const TreeMeasurement& tree) {
    const ScanItem& item = items_[index];
    const auto canonicalPath = canonicalPathOf(item.url.path);
    const ScanCandidate* candidate = canonicalPath ? places_.candidateAt(*canonicalPath) : nullptr;
    if (candidate == nullptr) return locationRefusal();
    if (!isSame(*candidate, tree)) return quorvane::refusalOf(FileProtectionError::changed);
    const ItemVerdict verdict = places_.judged(*candidate, tree, stop_);
    if (verdict.safety == SafetyLevel::blocked) return protectedRefusal();
    if (item.safety != SafetyLevel::safe) return std::nullopt;
    if (verdict.safety != SafetyLevel::safe) return quorvane::refusalOf(FileProtectionError::changed);
    const auto demotion = places_.demotion(item, *candidate, tree);
    return demotion ? std::optional(refusalOf(*demotion)) : std::nullopt;
  }

 private:
  /// Only a link leads elsewhere than its canonical path says.
  bool allowsCleaning(const FilePath& path, const FilePath& canonicalPath, const ScanCandidate* candidate) const {
    if (candidate == nullptr) return places_.allowsCleaning(path);
    const auto status = services_.fileSystem.status(candidate->folder->descriptor.number(), candidate->name.c_str());
    const bool isNoLink = status && !status->isLink();
    return isNoLink ? places_.allowsCleaning(path, canonicalPath) : places_.allowsCleaning(path);
  }

  /// Items of one folder follow each other.
  std::optional<FilePath> canonicalPathOf(const FilePath& path) {
    const FilePath folder = parentOf(path);
    if (folder != folder_) {
      folder_ = folder;
      auto resolved = services_.fileSystem.resolved(folder);
      canonicalFolder_ = resolved ? std::optional(*std::move(resolved)) : std::nullopt;
    }
    return canonicalFolder_ ? std::optional(joined(*canonicalFolder_, leafOf(path))) : std::nullopt;
  }

  /// Whether what the tables were asked about is what was measured.
  bool isSame(const ScanCandidate& candidate, const TreeMeasurement& tree) const {
    const auto status = services_.fileSystem.status(candidate.folder->descriptor.number(), candidate.name.c_str());
    return status && identityOf(*status) == identityOf(tree.root);
  }

  const ScanServices& services_;
  const std::vector<ScanItem>& items_;
  StopToken stop_;
  ReviewedPlaces places_;
  FilePath folder_;                          ///< that was resolved last
  std::optional<FilePath> canonicalFolder_;  ///< what it is
};

}  // namespace

CleanerService::CleanerService(ScanServices services, ScanSettings settings, Remover& remover)
    : services_(services), settings_(std::move(settings)), remover_(remover) {}

Outcome<RemovalReport, RemovalError> CleanerService::clean(const std::vector<ScanItem>& items,
                                                           const RemovalOptions& options) {
  ItemChecks checks(services_, settings_, items, options.stop);
  std::vector<RemovalRequest> requests;
  requests.reserve(items.size());
  for (const ScanItem& item : items) requests.push_back(checks.requestFor(item));
  return remover_.remove(
      requests,
      {.before = [&](std::size_t index) { return checks.before(index); },
       .measured = [&](std::size_t index, const TreeMeasurement& tree) { return checks.measured(index, tree); },
       .watchedNames = repositoryNames},
      options);
}

}  // namespace quorvane
