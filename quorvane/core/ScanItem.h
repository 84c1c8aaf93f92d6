#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/JsonRecord.h"
#include "quorvane/base/Uuid.h"
#include "quorvane/core/FileTreeSnapshot.h"
#include "quorvane/core/MobileBackupMetadata.h"
#include "quorvane/core/SafetyLevel.h"
#include "quorvane/core/ScanCategory.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane {

/// One found location that could be removed.
struct ScanItem {
  Uuid id;      ///< fresh for every scan; the item's identity in review, preflight and history
  FileUrl url;  ///< a file or a whole folder
  std::string displayName;
  ScanCategory category = ScanCategory::applicationCache;
  SafetyLevel safety = SafetyLevel::blocked;
  std::string reasonKey;  ///< the message key that explains the safety level
  std::int64_t size = 0;  ///< allocated bytes of the whole tree, each object once: what `du` counts
  bool isSelected = false;
  std::optional<FileTreeSnapshot> snapshot;
  std::optional<MobileBackupMetadata> backupMetadata;  ///< of device backups only

  bool operator==(const ScanItem&) const = default;
};
QV_JSON_FIELDS(ScanItem, id, url, displayName, category, safety, reasonKey, size, isSelected, snapshot, backupMetadata)

}  // namespace quorvane
