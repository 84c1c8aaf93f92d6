#include "quorvane/scan/ScanScope.h"

#include <algorithm>

namespace quorvane {

std::optional<ScanCoverageReason> ScanScope::reasonToSkip(const FilePath& canonicalPath) const {
  const auto isIgnored = [&](const IgnoreRule& rule) { return overlap(rule.canonicalPath, canonicalPath); };
  if (std::ranges::any_of(scanIgnoreRules, isIgnored)) return ScanCoverageReason::ignored;
  if (scanCloudScope.touches(canonicalPath)) return ScanCoverageReason::cloud;
  if (overlap(ownData, canonicalPath)) return ScanCoverageReason::ownData;
  if (holdsAtOrBelow(mountPoints, canonicalPath)) return ScanCoverageReason::mountPoint;
  return std::nullopt;
}

ScanScope scanScope(const ScanServices& services, const ScanSettings& settings,
                    std::vector<ScanCoverageNote>& notices) {
  ScanScope scope{.scanIgnoreRules = {},
                  .scanCloudScope = CloudScope(services.fileSystem, settings.folders.home, settings.layout),
                  .ownData = settings.folders.applicationSupport,
                  .mountPoints = {}};
  if (auto rules = services.ignoreStore.load()) {
    scope.scanIgnoreRules = *std::move(rules);
  } else {
    notices.push_back({.path = rules.error().file, .key = "coverage.notice.ignoreRulesUnreadable"});
  }
  if (auto ownData = services.fileSystem.resolved(scope.ownData)) scope.ownData = *std::move(ownData);
  if (auto mountPoints = services.volumes.mountPoints()) {
    scope.mountPoints = *std::move(mountPoints);
  } else {
    notices.push_back({.key = "coverage.notice.mountsUnknown"});
  }
  return scope;
}

}  // namespace quorvane
