#pragma once

#include "quorvane/health/SystemStatusSnapshot.h"

#include <string>

namespace quorvane {

/// The snapshot with memoryPercent, diskUsedPercent, healthScore, healthLevel and deductions: pretty-printed with
/// sorted keys and a final line break.
std::string jsonText(const SystemStatusSnapshot& snapshot);

/// The same on one line, for streams.
std::string jsonLine(const SystemStatusSnapshot& snapshot);

}  // namespace quorvane
