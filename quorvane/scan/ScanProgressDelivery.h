#pragma once

#include "quorvane/scan/ProgressDelivery.h"

namespace quorvane {

/// Delivers the bare fraction of a running operation.
using ScanProgressDelivery = ProgressDelivery<double>;

}  // namespace quorvane
