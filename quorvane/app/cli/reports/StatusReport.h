#pragma once

#include "quorvane/app/cli/terminal/ReportText.h"
#include "quorvane/health/ProcessOrder.h"
#include "quorvane/health/SystemStatusSnapshot.h"

#include <span>
#include <string>

namespace quorvane {

/// What was measured before, the oldest first; empty where no lines are to be drawn.
struct StatusHistories {
  std::span<const double> processor = {};  ///< percent
  std::span<const double> memory = {};     ///< percent
  std::span<const double> network = {};    ///< bytes a second
};

/// The machine for people: the score, each input, and what to do about each deduction. Laid out, an input has a bar or,
/// where there is a history, a line of it.
std::string statusText(const SystemStatusSnapshot& snapshot, const StatusHistories& histories,
                       const ReportStyle& style);

/// The same without histories, and the ten first processes in their order.
std::string statusReport(const SystemStatusSnapshot& snapshot, SystemProcessSortMode sort, const ReportStyle& style);

}  // namespace quorvane
