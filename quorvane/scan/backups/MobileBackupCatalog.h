#pragma once

#include "quorvane/base/Date.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/base/Outcome.h"
#include "quorvane/core/MobileBackupMetadata.h"
#include "quorvane/platform/Clock.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/scan/policy/ItemVerdict.h"

#include <string>
#include <vector>

namespace quorvane {

/// One device backup.
struct MobileBackupRecord {
  FilePath url;  ///< its folder
  MobileBackupMetadata metadata;
  std::string reasonKey;  ///< "backup.reason.latest", ".recent", ".older" or ".unknown"

  bool operator==(const MobileBackupRecord&) const = default;
};

/// An open folder of backups, and the path it was opened by.
struct MobileBackupFolder {
  int descriptor = -1;
  FilePath url;
};

/// How safe a backup is to remove: `review` for one that was older when it was read and is at least a day old, else
/// `blocked`.
ItemVerdict verdictOf(const MobileBackupRecord& record, Date now);

/// Reads device backups. Follows no link; changes nothing.
class MobileBackupCatalog {
 public:
  MobileBackupCatalog(FileSystem& fileSystem, const Clock& clock) : fileSystem_(fileSystem), clock_(clock) {}

  /// A record for every folder in `folder`, in the order of their names, be it a backup or not. Fails only when the
  /// folder cannot be listed to its end, for then nobody knows which backup is the newest.
  ///
  /// `latest` are, of each device, the newest readable backup and the newest that is also complete and not dated in the
  /// future; several when they are equally new. A backup that names no device is one of its own. `unknown` has no date,
  /// or a property list that cannot be read; `recent` is less than a day old, or dated in the future.
  Outcome<std::vector<MobileBackupRecord>, PosixError> records(const MobileBackupFolder& folder);

 private:
  FileSystem& fileSystem_;
  const Clock& clock_;
};

}  // namespace quorvane
