#pragma once

#include "quorvane/platform/SystemSensors.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// One folder of /sys/class/thermal: a part of the machine, how warm it is, and from where on the kernel acts. All in
/// thousandths of a degree Celsius.
struct ThermalZone {
  std::optional<std::int64_t> temperature = {};
  std::optional<std::int64_t> passive = {};   ///< the kernel slows the machine down from here on
  std::optional<std::int64_t> hot = {};       ///< it tells the firmware
  std::optional<std::int64_t> critical = {};  ///< it switches the machine off

  bool operator==(const ThermalZone&) const = default;
};

/// Reads one from its attributes, as `powerSupplyFrom` does. Of several trip points of a kind the lowest counts; those
/// that cannot be meant (zero and less, 200 degrees and more) are left out, as is a temperature outside -60 to 200.
ThermalZone thermalZoneFrom(const std::function<std::optional<std::string>(const char* name)>& attribute);

/// The zone's level, or nothing when it tells no temperature, or nothing to compare it with:
///
/// - critical: at a hot trip point, or at most 5 degrees below a critical one;
/// - serious: at a passive trip point, or at most 10 degrees below a hot or critical one;
/// - fair: at most 5 degrees below a passive trip point, or at most 20 below a hot or critical one.
///
/// Active trip points, which start fans, are none of these: a fan that turns is how a machine works.
std::optional<SystemThermalLevel> thermalLevelOf(const ThermalZone& zone);

/// The level of the worst zone; nothing when none of them has one.
std::optional<SystemThermalLevel> worstThermalLevel(const std::vector<ThermalZone>& zones);

}  // namespace quorvane
