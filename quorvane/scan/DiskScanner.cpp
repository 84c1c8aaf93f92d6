#include "quorvane/scan/DiskScanner.h"

#include "quorvane/scan/LeftoverSearch.h"
#include "quorvane/scan/ScanRun.h"
#include "quorvane/scan/StorageSummary.h"

namespace quorvane {

std::string messageKey(ScanFault fault) { return "scan.error." + std::string(caseName(fault)); }

DiskScanner::DiskScanner(ScanServices services, ScanSettings settings)
    : services_(services), settings_(std::move(settings)) {}

Outcome<ScanResult, ScanFault> DiskScanner::scan(const ScanRequest& request, ScanPauseControl& control,
                                                 const ScanProgressSink& progress) {
  return ScanRun(services_, settings_, request, control, progress).perform();
}

Outcome<std::vector<ScanItem>, ScanFault> DiskScanner::leftovers(const LeftoverQuery& application,
                                                                 ScanPauseControl& control) {
  if (settings_.layout != HomeLayout::macos) return std::vector<ScanItem>{};
  std::vector<ScanCoverageNote> notices;
  const ScanScope scope = scanScope(services_, settings_, notices);
  return LeftoverSearch(services_, settings_, scope, application, control).perform();
}

Outcome<StorageSnapshot, ScanFault> DiskScanner::storageSummary(ScanPauseControl& control,
                                                                const ScanProgressSink& progress) {
  return quorvane::storageSummary(services_, settings_, control, progress);
}

}  // namespace quorvane
