#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/platform/ApplicationFolders.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/scan/locations/ScanSettings.h"

#include <utility>

namespace quorvane {

/// The folder that a location's path begins at.
enum class LocationBase { home, cache, configuration, data, state, downloads };
QV_CASE_NAMES(LocationBase, home, cache, configuration, data, state, downloads)

/// Where the bases lie for one user.
class LocationFolders {
 public:
  /// For the Linux layout the download folder is the one of the user's "user-dirs.dirs", as long as it lies below the
  /// home; "Downloads" without such a file.
  LocationFolders(const ScanSettings& settings, FileSystem& fileSystem);

  const FilePath& at(LocationBase base) const;
  /// Whether a folder that a base leads to may be read; for a confined home only what lies in it.
  bool allows(const FilePath& canonicalPath) const;

 private:
  ApplicationFolders folders_;
  FilePath canonicalHome_;
  FilePath downloads_;
};

}  // namespace quorvane
