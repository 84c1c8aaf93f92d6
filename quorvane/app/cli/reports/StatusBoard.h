#pragma once

#include "quorvane/app/cli/reports/StatusReport.h"

#include <chrono>
#include <cstddef>
#include <string>

namespace quorvane {

/// What a person has made of the board.
struct StatusBoardState {
  SystemProcessSortMode sort = SystemProcessSortMode::cpu;
  bool isPaused = false;
  bool hasKeys = true;  ///< somebody can type
  std::chrono::milliseconds interval{2000};
};

/// The status as high as `rows` at most: its figures, as many processes as there is room for, and a line about the keys
/// at the bottom. Where it is too low, the processes go first, then the end of the figures.
std::string statusBoard(const SystemStatusSnapshot& snapshot, const StatusHistories& histories,
                        const StatusBoardState& state, std::size_t rows, const ReportStyle& style);

}  // namespace quorvane
