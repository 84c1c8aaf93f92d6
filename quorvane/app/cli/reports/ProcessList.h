#pragma once

#include "quorvane/app/cli/terminal/ReportText.h"
#include "quorvane/platform/SystemProcesses.h"

#include <cstddef>
#include <string>
#include <vector>

namespace quorvane {

/// At most `most` processes in their order: number, load, memory, name, and the path where there is room for it. Laid
/// out there is a line with the heads of the columns above them. Empty without processes.
std::string processList(const std::vector<SystemProcessSample>& processes, std::size_t most, const ReportStyle& style);

}  // namespace quorvane
