#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/base/JsonRecord.h"
#include "quorvane/core/ScanCategory.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// How much of a location a scan has seen.
enum class ScanCoverageStatus {
  complete,    ///< all of it
  partial,     ///< some parts could not be read: the sizes found there are lower bounds
  absent,      ///< there is no such place in this home
  skipped,     ///< left out on purpose
  unreadable,  ///< nothing of it could be read
};
QV_CASE_NAMES(ScanCoverageStatus, complete, partial, absent, skipped, unreadable)

/// Why a location has its status.
enum class ScanCoverageReason {
  read,              ///< it was read
  missing,           ///< nothing stands there
  notAFolder,        ///< something else than a folder stands there
  link,              ///< it is a link, or lies behind one: links are not followed
  ignored,           ///< an ignore rule covers it
  cloud,             ///< it lies in a folder that a cloud service keeps in step
  mountPoint,        ///< another volume is mounted there, or inside
  permissionDenied,  ///< the system refused to read it, or parts of it
  changing,          ///< it vanished or became something else while it was read
  failed,            ///< reading failed for another reason
  ownData,           ///< the program keeps its own state there, or inside
  overlaps,          ///< another item holds it, or lies inside
  categoryNotAsked,  ///< the scan was limited to other categories
};
QV_CASE_NAMES(ScanCoverageReason, read, missing, notAFolder, link, ignored, cloud, mountPoint, permissionDenied,
              changing, failed, ownData, overlaps, categoryNotAsked)

/// What a person should know of an item, or of the scan, beyond an item's reason.
struct ScanCoverageNote {
  std::optional<FilePath> path = {};  ///< of the item it is about
  std::string key;                    ///< message key; its placeholders are the members below
  std::optional<std::int64_t> count = {};
  std::vector<std::string> names = {};  ///< shown as a list, at most a few

  bool operator==(const ScanCoverageNote&) const = default;
};
QV_JSON_FIELDS(ScanCoverageNote, path, key, count, names)

/// One location of the scan's table, or a place within one that yielded no item for the reason given.
struct ScanCoverageEntry {
  FilePath path;  ///< components that the table leaves open are written "*"
  ScanCategory category = ScanCategory::applicationCache;
  ScanCoverageStatus status = ScanCoverageStatus::complete;
  ScanCoverageReason reason = ScanCoverageReason::read;
  std::int64_t itemCount = 0;
  std::vector<FilePath> unreadablePaths = {};  ///< the first thousand of the folders and files that could not be read
  std::vector<ScanCoverageNote> notes = {};

  /// Keeps the path unless a thousand are kept already.
  void addUnreadable(const FilePath& unreadable);

  bool operator==(const ScanCoverageEntry&) const = default;
};
QV_JSON_FIELDS(ScanCoverageEntry, path, category, status, reason, itemCount, unreadablePaths, notes)

/// What a scan looked at, and how well.
struct ScanCoverageLedger {
  std::vector<ScanCoverageEntry> entries;  ///< in the order of the scan; each location of the table exactly once
  std::vector<ScanCoverageNote> notices;   ///< about the scan as a whole

  bool operator==(const ScanCoverageLedger&) const = default;
};
QV_JSON_FIELDS(ScanCoverageLedger, entries, notices)

}  // namespace quorvane
