#pragma once

#include "quorvane/base/Outcome.h"
#include "quorvane/core/IgnoreRuleStore.h"
#include "quorvane/core/ScanResult.h"
#include "quorvane/core/StorageSnapshot.h"
#include "quorvane/core/TreeWalker.h"
#include "quorvane/platform/Clock.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/platform/ProcessRunner.h"
#include "quorvane/platform/ProcessTable.h"
#include "quorvane/platform/RandomSource.h"
#include "quorvane/platform/Volumes.h"
#include "quorvane/scan/ScanPauseControl.h"
#include "quorvane/scan/ScanProgress.h"
#include "quorvane/scan/locations/ScanSettings.h"

#include <string>
#include <vector>

namespace quorvane {

/// What the scanner works with; all of it outlives the scanner.
struct ScanServices {
  FileSystem& fileSystem;
  Volumes& volumes;
  ProcessTable& processReader;
  ProcessRunner& processRunner;
  const Clock& clock;
  RandomSource& random;
  TreeWalker& walker;
  IgnoreRuleStore& ignoreStore;
};

/// Why there is no result.
enum class ScanFault {
  cancelled,
  homeUnreadable,  ///< the home folder cannot be opened
};
QV_CASE_NAMES(ScanFault, cancelled, homeUnreadable)

/// "scan.error." and the name of the case.
std::string messageKey(ScanFault fault);

/// An application whose leftovers are looked for.
struct LeftoverQuery {
  std::string bundleIdentifier;
  std::string name;
};

/// Finds what could be removed from one home, classifies and measures it. Never changes anything.
///
/// One call at a time (`Serialised` sees to that in the faces); measuring uses the walker's threads.
class DiskScanner {
 public:
  DiskScanner(ScanServices services, ScanSettings settings);

  /// The full cleaning scan. Places that cannot be read yield no items and are named in the result; only a cancelled
  /// scan, or a home that cannot be opened, has no result.
  Outcome<ScanResult, ScanFault> scan(const ScanRequest& request, ScanPauseControl& control,
                                      const ScanProgressSink& progress);

  /// What an application may have left in a home of the macOS layout; a home of another layout has no such places.
  Outcome<std::vector<ScanItem>, ScanFault> leftovers(const LeftoverQuery& application, ScanPauseControl& control);

  /// How the volume of the home folder is used. Measures the home and the applications as a whole, which takes seconds
  /// on a large disk; `progress` tells how many entries were seen.
  Outcome<StorageSnapshot, ScanFault> storageSummary(ScanPauseControl& control, const ScanProgressSink& progress);

 private:
  ScanServices services_;
  ScanSettings settings_;
};

}  // namespace quorvane
