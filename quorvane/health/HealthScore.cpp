#include "quorvane/health/HealthScore.h"

#include <algorithm>
#include <array>
#include <span>

namespace quorvane {

namespace {

/// From this value on so many points are taken. Of a table the first row that applies counts.
struct Step {
  double threshold;
  int points;
};

constexpr double placeOf(SystemThermalLevel level) { return static_cast<double>(level); }

constexpr std::array processorSteps{Step{90, 25}, Step{75, 15}, Step{55, 7}};
constexpr std::array memorySteps{Step{90, 25}, Step{75, 12}, Step{60, 5}};
constexpr std::array diskSteps{Step{95, 25}, Step{85, 12}};
constexpr std::array thermalSteps{Step{placeOf(SystemThermalLevel::critical), 35},
                                  Step{placeOf(SystemThermalLevel::serious), 20},
                                  Step{placeOf(SystemThermalLevel::fair), 8}};

/// One input of the score.
struct Judgement {
  SystemStatusInput input;
  double value;
  std::span<const Step> steps;
  const char* key;
};

}  // namespace

HealthScore healthScore(const SystemStatusSnapshot& snapshot) {
  const std::array judgements{
      Judgement{SystemStatusInput::processor, snapshot.cpuPercent, processorSteps, "status.advice.processor"},
      Judgement{SystemStatusInput::memory, memoryPercent(snapshot), memorySteps, "status.advice.memory"},
      Judgement{SystemStatusInput::disk, diskUsedPercent(snapshot), diskSteps, "status.advice.disk"},
      Judgement{SystemStatusInput::thermal, placeOf(snapshot.thermalLevel), thermalSteps, "status.advice.thermal"}};
  HealthScore health;
  for (const auto& [input, value, steps, key] : judgements) {
    const auto step = std::ranges::find_if(steps, [&](const Step& each) { return value >= each.threshold; });
    if (step == steps.end()) continue;
    health.score -= step->points;
    health.deductions.push_back({input, value, step->threshold, step->points, key});
  }
  health.score = std::max(0, health.score);
  health.level = healthLevel(health.score);
  return health;
}

SystemHealthLevel healthLevel(int score) {
  if (score >= 85) return SystemHealthLevel::healthy;
  if (score >= 65) return SystemHealthLevel::fair;
  return SystemHealthLevel::attention;
}

std::string titleKey(SystemHealthLevel level) { return "status.health." + std::string(caseName(level)); }

}  // namespace quorvane
