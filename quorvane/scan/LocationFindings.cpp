#include "quorvane/scan/LocationFindings.h"

namespace quorvane {

namespace {

ScanCoverageReason reasonOf(PosixError error) {
  if (error.isLink()) return ScanCoverageReason::link;
  if (error.isOtherKind()) return ScanCoverageReason::notAFolder;
  return error.isDenied() ? ScanCoverageReason::permissionDenied : ScanCoverageReason::failed;
}

}  // namespace

void LocationFindings::noteRead() {
  if (!wasRead && location.unreadablePaths.empty()) {
    location.status = ScanCoverageStatus::complete;
    location.reason = ScanCoverageReason::read;
  } else if (location.status == ScanCoverageStatus::unreadable) {
    location.status = ScanCoverageStatus::partial;
  }
  wasRead = true;
}

void LocationFindings::noteFailure(PosixError error, const FilePath& path) {
  if (error.isMissing()) return;
  const ScanCoverageReason reason = reasonOf(error);
  const bool isPassedOver = error.isOtherKind();
  if (!isPassedOver) location.addUnreadable(path);
  if (isPassedOver && (wasRead || location.path.bytes.contains('*'))) {
    leaveOut(path, location.category, reason);
  } else if (wasRead) {
    location.status = ScanCoverageStatus::partial;
    location.reason = reason;
  } else {
    location.status = isPassedOver ? ScanCoverageStatus::skipped : ScanCoverageStatus::unreadable;
    location.reason = reason;
  }
}

void LocationFindings::leaveOut(const FilePath& path, ScanCategory category, ScanCoverageReason reason) {
  leftOut.push_back({.path = path, .category = category, .status = ScanCoverageStatus::skipped, .reason = reason});
}

}  // namespace quorvane
