#pragma once

#include "quorvane/scan/ProgressDelivery.h"

namespace quorvane {

/// Delivers the full reports of a cleaning scan.
using CleaningScanProgressDelivery = ProgressDelivery<CleaningScanProgressUpdate>;

}  // namespace quorvane
