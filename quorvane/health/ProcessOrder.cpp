#include "quorvane/health/ProcessOrder.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace quorvane {

namespace {

auto byLoad(const SystemProcessSample& sample) {
  return std::tuple(-sample.cpuPercent, -sample.memoryBytes, sample.pid);
}

auto byMemory(const SystemProcessSample& sample) {
  return std::tuple(-sample.memoryBytes, -sample.cpuPercent, sample.pid);
}

}  // namespace

std::string titleKey(SystemProcessSortMode mode) { return "status.process.sort." + std::string(caseName(mode)); }

std::vector<SystemProcessSample> ordered(std::vector<SystemProcessSample> processes, SystemProcessSortMode mode) {
  switch (mode) {
    case SystemProcessSortMode::cpu: std::ranges::sort(processes, {}, byLoad); break;
    case SystemProcessSortMode::memory: std::ranges::sort(processes, {}, byMemory); break;
  }
  return processes;
}

}  // namespace quorvane
