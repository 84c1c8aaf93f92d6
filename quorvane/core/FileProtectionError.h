#pragma once

#include "quorvane/base/CaseNames.h"

#include <string>

namespace quorvane {

/// Why a removal or a restore was refused.
enum class FileProtectionError {
  ignored,
  changed,
  cloud,
  running,
  unavailable,
  conflict,
  legacy,
  invalidRestore,
  backupProtected,
  cloudConfigurationUnavailable,
  sharedContainer,
  ownershipUnverified,
  backgroundRunning,
  processUnavailable,
  fileInUse,
  fileUseUnavailable,
};
QV_CASE_NAMES(FileProtectionError, ignored, changed, cloud, running, unavailable, conflict, legacy, invalidRestore,
              backupProtected, cloudConfigurationUnavailable, sharedContainer, ownershipUnverified, backgroundRunning,
              processUnavailable, fileInUse, fileUseUnavailable)

/// "protection.error." and the name of the case.
std::string messageKey(FileProtectionError error);

}  // namespace quorvane
