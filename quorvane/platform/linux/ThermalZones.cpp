#include "quorvane/platform/linux/ThermalZones.h"

#include "quorvane/platform/posix/TextWords.h"

#include <algorithm>

namespace quorvane {

namespace {

constexpr std::int64_t degree = 1000;
constexpr int mostTripPoints = 32;

std::optional<std::int64_t> temperatureIn(const std::optional<std::string>& text, std::int64_t above) {
  const auto number = wholeNumber<std::int64_t>(text.value_or(""));
  return number && *number > above && *number < 200 * degree ? number : std::nullopt;
}

/// Whether a temperature is at most so many degrees below the trip point, or beyond it.
bool isNear(std::int64_t temperature, const std::optional<std::int64_t>& trip, std::int64_t degreesBelow) {
  return trip && temperature >= *trip - degreesBelow * degree;
}

}  // namespace

ThermalZone thermalZoneFrom(const std::function<std::optional<std::string>(const char* name)>& attribute) {
  ThermalZone zone;
  zone.temperature = temperatureIn(attribute("temp"), -60 * degree);
  for (int i = 0; i < mostTripPoints; ++i) {
    const std::string trip = "trip_point_" + std::to_string(i);
    const auto type = attribute((trip + "_type").c_str());
    if (!type) break;
    auto* const kept = *type == "passive"    ? &zone.passive
                       : *type == "hot"      ? &zone.hot
                       : *type == "critical" ? &zone.critical
                                             : nullptr;
    if (kept == nullptr) continue;
    const auto temperature = temperatureIn(attribute((trip + "_temp").c_str()), 0);
    if (temperature && (!*kept || *temperature < **kept)) *kept = temperature;
  }
  return zone;
}

std::optional<SystemThermalLevel> thermalLevelOf(const ThermalZone& zone) {
  if (!zone.temperature || (!zone.passive && !zone.hot && !zone.critical)) return std::nullopt;
  const std::int64_t now = *zone.temperature;
  if (isNear(now, zone.hot, 0) || isNear(now, zone.critical, 5)) return SystemThermalLevel::critical;
  const auto isNearEnd = [&](std::int64_t degrees) {
    return isNear(now, zone.hot, degrees) || isNear(now, zone.critical, degrees);
  };
  if (isNear(now, zone.passive, 0) || isNearEnd(10)) return SystemThermalLevel::serious;
  if (isNear(now, zone.passive, 5) || isNearEnd(20)) return SystemThermalLevel::fair;
  return SystemThermalLevel::nominal;
}

std::optional<SystemThermalLevel> worstThermalLevel(const std::vector<ThermalZone>& zones) {
  std::optional<SystemThermalLevel> worst;
  for (const ThermalZone& zone : zones) worst = std::max(worst, thermalLevelOf(zone));
  return worst;
}

}  // namespace quorvane
