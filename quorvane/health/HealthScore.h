#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/JsonRecord.h"
#include "quorvane/health/SystemStatusSnapshot.h"

#include <string>
#include <vector>

namespace quorvane {

/// What a score amounts to, the best first.
enum class SystemHealthLevel { healthy, fair, attention };
QV_CASE_NAMES(SystemHealthLevel, healthy, fair, attention)

/// Why a score is below 100.
struct HealthDeduction {
  SystemStatusInput input = SystemStatusInput::processor;
  double value = 0;      ///< percent; of the thermal level its place: fair 1, serious 2, critical 3
  double threshold = 0;  ///< from which value on so many points are taken
  int points = 0;        ///< more than 0
  std::string key;       ///< message key of what can be done about it

  bool operator==(const HealthDeduction&) const = default;
};
QV_JSON_FIELDS(HealthDeduction, input, value, threshold, points, key)

/// How well the machine is at one moment, by processor, memory, disk and thermal level.
struct HealthScore {
  int score = 100;  ///< 0 to 100
  SystemHealthLevel level = SystemHealthLevel::healthy;
  std::vector<HealthDeduction> deductions;  ///< in the order of their inputs

  bool operator==(const HealthScore&) const = default;
};

/// 100 without the points of all deductions, at least 0. An input that was not measured costs nothing.
HealthScore healthScore(const SystemStatusSnapshot& snapshot);

/// From 85 points on healthy, from 65 on fair.
SystemHealthLevel healthLevel(int score);

/// The message key of the level's name.
std::string titleKey(SystemHealthLevel level);

}  // namespace quorvane
