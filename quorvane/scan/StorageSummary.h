#pragma once

#include "quorvane/scan/DiskScanner.h"

namespace quorvane {

/// See `DiskScanner::storageSummary`.
Outcome<StorageSnapshot, ScanFault> storageSummary(const ScanServices& services, const ScanSettings& settings,
                                                   ScanPauseControl& control, const ScanProgressSink& progress);

}  // namespace quorvane
