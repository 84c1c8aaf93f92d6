#pragma once

#include "quorvane/scan/DiskScanner.h"
#include "quorvane/scan/ItemJudge.h"
#include "quorvane/scan/LocationFinder.h"
#include "quorvane/scan/policy/CleaningSafetyPolicy.h"

#include <vector>

namespace quorvane {

/// What looking at one home takes, as that home is at one moment. Its parts refer to each other: it stays where it is.
struct ScanGround {
  /// Everything handed over outlives the ground. `notices` gets what a person should know of it.
  ScanGround(const ScanServices& services, const ScanSettings& settings, std::vector<ScanCoverageNote>& notices);
  ScanGround(const ScanGround&) = delete;
  ScanGround& operator=(const ScanGround&) = delete;

  const Date now;
  const LocationTable& table;
  const FilePath cachesRoot;  ///< the user's cache folder
  const LocationFolders folders;
  const ScanScope scope;
  LocationFinder finder;
  const CleaningSafetyPolicy policy;
  ItemJudge judge;
};

}  // namespace quorvane
