#include "quorvane/scan/locations/ScanStep.h"

#include <utility>

namespace quorvane {

ScanStepProgress progressOf(ScanStep step) {
  switch (step) {
    case ScanStep::caches: return {"scan.status.appCaches", 0.05, 0.37};
    case ScanStep::logs: return {"scan.status.logs", 0.42, 0.16};
    case ScanStep::developer: return {"scan.status.developer", 0.58, 0.08};
    case ScanStep::worktrees: return {"scan.status.aiWorktrees", 0.66, 0.10};
    case ScanStep::installers: return {"scan.status.installers", 0.76, 0};
    case ScanStep::mailDownloads: return {"scan.status.mailDownloads", 0.80, 0.04};
    case ScanStep::deviceBackups: return {"scan.status.deviceBackups", 0.84, 0.04};
  }
  std::unreachable();
}

}  // namespace quorvane
