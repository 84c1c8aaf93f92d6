#pragma once

#include "quorvane/base/Date.h"
#include "quorvane/base/JsonRecord.h"

#include <optional>
#include <string>

namespace quorvane {

/// What a device backup says of itself.
struct MobileBackupMetadata {
  std::optional<std::string> deviceName;
  std::optional<std::string> deviceIdentifier;
  std::optional<std::string> productVersion;
  std::optional<Date> backupDate;
  std::optional<bool> isEncrypted;         ///< empty when the backup does not say
  bool isComplete = false;                 ///< finished, with its manifest and database in place
  std::optional<Date> metadataModifiedAt;  ///< of the newest of its property lists

  bool operator==(const MobileBackupMetadata&) const = default;
};
QV_JSON_FIELDS(MobileBackupMetadata, deviceName, deviceIdentifier, productVersion, backupDate, isEncrypted, isComplete,
               metadataModifiedAt)

}  // namespace quorvane
