#pragma once

#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/reports/RemovalSummary.h"

#include <functional>
#include <vector>

namespace quorvane {

using RemovalHandlers = AppModel::Handlers<RemovalReport, RemovalError>;
using RemovalStart = std::function<void(AppModel::RemovalKind, RemovalHandlers)>;

/// Runs a removal of these items to its end, and prints what came of it together with what failed before.
CommandOutcome runRemoval(Console& console, MainLoop& loop, AppModel& model, bool isRehearsal,
                          const std::vector<ScanItem>& items, const RemovalStart& start);
CommandOutcome runRemoval(Console& console, MainLoop& loop, AppModel& model, bool isRehearsal,
                          const std::vector<RemovalRequest>& requests, std::vector<FailedItem> failedBefore,
                          const RemovalStart& start);

}  // namespace quorvane
