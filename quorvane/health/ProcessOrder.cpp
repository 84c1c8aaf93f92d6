#include "quorvane/health/ProcessOrder.h"

#include <algorithm>
#include <utility>

namespace quorvane {

std::string titleKey(SystemProcessSortMode mode) { return "status.process.sort." + std::string(caseName(mode)); }

SystemProcessSortMode otherThan(SystemProcessSortMode mode) {
  return mode == SystemProcessSortMode::cpu ? SystemProcessSortMode::memory : SystemProcessSortMode::cpu;
}

std::vector<SystemProcessSample> ordered(std::vector<SystemProcessSample> processes, SystemProcessSortMode mode) {
  switch (mode) {
    case SystemProcessSortMode::cpu: std::ranges::sort(processes, isBusier); break;
    case SystemProcessSortMode::memory: std::ranges::sort(processes, isLarger); break;
  }
  return processes;
}

}  // namespace quorvane
