#pragma once

#include "quorvane/app/cli/Commands.h"
#include "quorvane/core/ScanResult.h"
#include "quorvane/developer/DockerSnapshot.h"

namespace quorvane {

/// Reads the reviewed result that `--from` names, of at most 64 MiB; "-" is standard input. Refused when it cannot be
/// read, holds no scan result, or is older than 24 hours.
Outcome<ScanResult, CommandError> reviewedResult(const CommandContext& context, AppModel& model);

/// The same for a kept listing of an engine: refused when it holds none, or is older than 24 hours.
Outcome<DockerSnapshot, CommandError> reviewedSnapshot(const CommandContext& context, AppModel& model);

}  // namespace quorvane
