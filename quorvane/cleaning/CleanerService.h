#pragma once

#include "quorvane/core/ScanItem.h"
#include "quorvane/removal/Remover.h"
#include "quorvane/scan/DiskScanner.h"

#include <vector>

namespace quorvane {

/// Executes a reviewed selection of a cleaning scan: exactly those items, each only as long as it is what was reviewed.
///
/// What a record says of itself is not believed. Whether a place may be cleaned, and how safely, is worked out anew:
/// the scan's tables are looked through again, and each item is judged by what stands there now. In this order an item
/// is refused that is blocked ("cleanup.failure.protected"), lies outside of the cleaning roots or is none of the
/// places that a scan finds ("cleanup.failure.location"), is ignored, a mount point or holds one, or has changed; that
/// was reviewed as safe and is not, or is no longer safe to take at this moment ("reason.preflight." and why); that is
/// in use.
class CleanerService {
 public:
  /// Everything that is handed over by reference outlives the service.
  CleanerService(ScanServices services, ScanSettings settings, Remover& remover);

  /// Moves the items to the Trash; the failures of the report are by the items' places in the list. Whether an item is
  /// marked as selected does not matter. One call at a time; waits for the disk, and measures on the walker's threads.
  Outcome<RemovalReport, RemovalError> clean(const std::vector<ScanItem>& items, const RemovalOptions& options);

 private:
  ScanServices services_;
  ScanSettings settings_;
  Remover& remover_;
};

}  // namespace quorvane
