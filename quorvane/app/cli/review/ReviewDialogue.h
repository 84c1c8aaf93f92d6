#pragma once

#include "quorvane/app/cli/terminal/Console.h"
#include "quorvane/core/ScanResult.h"
#include "quorvane/scan/locations/PlaceEvidence.h"

namespace quorvane {

/// Shows what is selected beside the result, and asks whether to move it to the Trash. The person may change the
/// selection of `result` and look at items, and at what `evidence` says of them, before the answer. True only for a
/// yes with something selected.
bool isConfirmed(Console& console, ScanResult& result, const PlaceEvidence& evidence);

}  // namespace quorvane
