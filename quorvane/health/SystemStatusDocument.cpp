#include "quorvane/health/SystemStatusDocument.h"

#include "quorvane/base/Json.h"
#include "quorvane/health/HealthScore.h"

namespace quorvane {

namespace {

Json documentOf(const SystemStatusSnapshot& snapshot) {
  const HealthScore health = healthScore(snapshot);
  Json document = toJson(snapshot);
  document["memoryPercent"] = memoryPercent(snapshot);
  document["diskUsedPercent"] = diskUsedPercent(snapshot);
  document["healthScore"] = health.score;
  document["healthLevel"] = toJson(health.level);
  document["deductions"] = toJson(health.deductions);
  return document;
}

}  // namespace

std::string jsonText(const SystemStatusSnapshot& snapshot) { return printedJson(documentOf(snapshot)); }

std::string jsonLine(const SystemStatusSnapshot& snapshot) { return documentOf(snapshot).dump() + "\n"; }

}  // namespace quorvane
