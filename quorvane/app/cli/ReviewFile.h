#pragma once

#include "quorvane/app/cli/Commands.h"
#include "quorvane/core/ScanResult.h"

namespace quorvane {

/// Reads the reviewed result that `--from` names, of at most 64 MiB; "-" is standard input. Refused when it cannot be
/// read, holds no scan result, or is older than 24 hours.
Outcome<ScanResult, CommandError> reviewedResult(const CommandContext& context, AppModel& model);

}  // namespace quorvane
