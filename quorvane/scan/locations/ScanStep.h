#pragma once

#include "quorvane/base/CaseNames.h"

#include <string_view>

namespace quorvane {

/// The steps of a scan, in their order.
enum class ScanStep { caches, logs, developer, worktrees, installers, mailDownloads, deviceBackups };
QV_CASE_NAMES(ScanStep, caches, logs, developer, worktrees, installers, mailDownloads, deviceBackups)

/// How a step shows in the progress of the scan: it begins at `start` and moves on by `span` over its entries.
struct ScanStepProgress {
  std::string_view statusKey;
  double start;
  double span;
};

/// Where in the progress of the scan the step stands.
ScanStepProgress progressOf(ScanStep step);

inline constexpr ScanStepProgress verifyingProgress{"scan.status.verifying", 0.88, 0};
inline constexpr ScanStepProgress finishedProgress{"scan.status.finished", 1.0, 0};

}  // namespace quorvane
