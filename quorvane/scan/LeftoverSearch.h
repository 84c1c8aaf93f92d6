#pragma once

#include "quorvane/scan/ApplicationSafetyPolicy.h"
#include "quorvane/scan/DiskScanner.h"
#include "quorvane/scan/ScanScope.h"

#include <vector>

namespace quorvane {

/// Looks for the leftovers of one application. Used once.
class LeftoverSearch {
 public:
  LeftoverSearch(const ScanServices& services, const ScanSettings& settings, const ScanScope& scope,
                 const LeftoverQuery& application, ScanPauseControl& control);

  Outcome<std::vector<ScanItem>, ScanFault> perform();

 private:
  void addLaunchAgents(int home, std::vector<LeftoverPlace>& places);
  /// Adds an item for a place where something stands; false once cancelled.
  bool addItem(int home, const LeftoverPlace& place);

  const ScanServices& services_;
  const ScanSettings& settings_;
  const ScanScope& scope_;
  const LeftoverQuery& application_;
  ScanPauseControl& control_;
  FilePath canonicalHome_;
  std::vector<ScanItem> items_;
};

}  // namespace quorvane
