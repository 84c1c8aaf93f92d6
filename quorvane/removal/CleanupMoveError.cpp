#include "quorvane/removal/CleanupMoveError.h"

#include <cerrno>
#include <utility>

namespace quorvane {

namespace {

CleanupFailureCategory categoryOf(FileProtectionError error) {
  switch (error) {
    case FileProtectionError::changed: return CleanupFailureCategory::changedAfterScan;
    case FileProtectionError::running:
    case FileProtectionError::backgroundRunning:
    case FileProtectionError::processUnavailable:
    case FileProtectionError::fileInUse:
    case FileProtectionError::fileUseUnavailable: return CleanupFailureCategory::inUse;
    case FileProtectionError::ignored:
    case FileProtectionError::cloud:
    case FileProtectionError::backupProtected:
    case FileProtectionError::sharedContainer:
    case FileProtectionError::ownershipUnverified: return CleanupFailureCategory::protected_;
    case FileProtectionError::unavailable:
    case FileProtectionError::conflict:
    case FileProtectionError::legacy:
    case FileProtectionError::invalidRestore:
    case FileProtectionError::cloudConfigurationUnavailable: return CleanupFailureCategory::other;
  }
  std::unreachable();
}

CleanupFailureCategory categoryOf(PosixError error) {
  if (error.isMissing()) return CleanupFailureCategory::missing;
  return error.isDenied() ? CleanupFailureCategory::permission : CleanupFailureCategory::other;
}

CleanupFailureCategory categoryOf(CleanupMoveError) { return CleanupFailureCategory::other; }

CleanupFailureCategory categoryOf(const RecoveryStoreError&) { return CleanupFailureCategory::other; }

std::string keyOf(FileProtectionError error) { return messageKey(error); }

std::string keyOf(CleanupMoveError) { return std::string(journalKeys::externalPending); }

std::string keyOf(PosixError error) {
  if (error.isMissing()) return "cleanup.failure.missing";
  if (error.isDenied()) return "cleanup.failure.permission";
  return error.code == ENOSPC || error.code == EDQUOT ? "cleanup.failure.noSpace" : "cleanup.failure.system";
}

std::string keyOf(const RecoveryStoreError& error) { return messageKey(error.fault); }

}  // namespace

std::string messageKey(const MoveFailure& failure) {
  return std::visit([](const auto& each) { return keyOf(each); }, failure);
}

CleanupFailureCategory categoryOf(const MoveFailure& failure) {
  return std::visit([](const auto& each) { return categoryOf(each); }, failure);
}

}  // namespace quorvane
