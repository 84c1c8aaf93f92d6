#include "quorvane/health/SystemStatusSnapshot.h"

#include <algorithm>

namespace quorvane {

namespace {

double percentOf(std::int64_t part, std::int64_t whole) {
  if (whole < 1) return 0;
  return std::clamp(static_cast<double>(part) / static_cast<double>(whole) * 100, 0.0, 100.0);
}

}  // namespace

bool isMeasured(const SystemStatusSnapshot& snapshot, SystemStatusInput input) {
  return std::ranges::find(snapshot.notMeasured, input) == snapshot.notMeasured.end();
}

double memoryPercent(const SystemStatusSnapshot& snapshot) {
  return percentOf(snapshot.memoryUsedBytes, snapshot.memoryTotalBytes);
}

double diskUsedPercent(const SystemStatusSnapshot& snapshot) {
  const std::int64_t total = std::max<std::int64_t>(0, snapshot.diskTotalBytes);
  return percentOf(total - std::clamp<std::int64_t>(snapshot.diskAvailableBytes, 0, total), total);
}

}  // namespace quorvane
