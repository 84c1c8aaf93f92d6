#pragma once

#include "quorvane/base/JsonRecord.h"

#include <cstdint>

namespace quorvane {

/// How the volume of the home folder is used; all in bytes.
struct StorageSnapshot {
  std::int64_t total = 0;
  std::int64_t available = 0;
  std::int64_t applications = 0;  ///< allocated below the folders of installed applications on that volume
  std::int64_t userFiles = 0;     ///< allocated below the home folder, applications there left out
  bool isPartial = false;         ///< one of the two sums is a lower bound

  bool operator==(const StorageSnapshot&) const = default;
};
QV_JSON_FIELDS(StorageSnapshot, total, available, applications, userFiles, isPartial)

}  // namespace quorvane
