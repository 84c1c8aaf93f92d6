#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/platform/SystemProcesses.h"

#include <string>
#include <vector>

namespace quorvane {

/// By what processes are ordered, the busiest or largest first.
enum class SystemProcessSortMode { cpu, memory };
QV_CASE_NAMES(SystemProcessSortMode, cpu, memory)

/// The message key of its name.
std::string titleKey(SystemProcessSortMode mode);

SystemProcessSortMode otherThan(SystemProcessSortMode mode);

/// The processes in that order; equal ones by the other measure, then by number.
std::vector<SystemProcessSample> ordered(std::vector<SystemProcessSample> processes, SystemProcessSortMode mode);

}  // namespace quorvane
