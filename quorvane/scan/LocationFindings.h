#pragma once

#include "quorvane/core/ScanCoverage.h"
#include "quorvane/platform/FileDescriptor.h"
#include "quorvane/platform/PosixError.h"
#include "quorvane/scan/locations/LocationTable.h"
#include "quorvane/scan/policy/ItemVerdict.h"

#include <memory>
#include <string>
#include <vector>

namespace quorvane {

/// An open folder on the way to something found.
struct FoundFolder {
  FileDescriptor descriptor;
  FilePath path;           ///< as the user knows it
  FilePath canonicalPath;  ///< links resolved
};

/// Something that may become an item once it is measured.
struct ScanCandidate {
  const LocationRule* rule = nullptr;
  std::shared_ptr<const FoundFolder> folder;
  std::string name;  ///< in that folder
  std::string displayName;
  ScanCategory category = ScanCategory::applicationCache;
  ItemVerdict verdict;          ///< as far as the place alone tells
  bool isVouchedByTag = false;  ///< only a cache directory tag makes it safe

  FilePath path() const { return joined(folder->path, name); }
  FilePath canonicalPath() const { return joined(folder->canonicalPath, name); }
};

/// What came of looking for one location of the table.
struct LocationFindings {
  std::vector<ScanCandidate> candidates;   ///< in the order of their paths
  ScanCoverageEntry location;              ///< of the location itself
  bool wasRead = false;                    ///< at least one of the folders that the location stands for
  std::vector<ScanCoverageEntry> leftOut;  ///< places in it that must not become items

  /// One of the location's folders was read.
  void noteRead();

  /// One of them was not. A location stands for one folder or, with "*" in its path, for many: one that failed does not
  /// speak for the others. What is missing is no failure.
  void noteFailure(PosixError error, const FilePath& path);

  void leaveOut(const FilePath& path, ScanCategory category, ScanCoverageReason reason);
};

}  // namespace quorvane
