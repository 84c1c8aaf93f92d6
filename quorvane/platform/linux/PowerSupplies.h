#pragma once

#include "quorvane/platform/SystemSensors.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// What a battery says of how full it is, in units that only its own kind shares.
struct BatteryCharge {
  std::int64_t now = 0;
  std::int64_t full = 0;

  bool operator==(const BatteryCharge&) const = default;
};

/// One folder of /sys/class/power_supply.
struct PowerSupply {
  enum class Kind { battery, mains, other };

  Kind kind = Kind::other;
  bool isOnline = false;                ///< of mains: electricity comes from there
  std::optional<BatteryCharge> energy;  ///< microwatt hours
  std::optional<BatteryCharge> charge;  ///< microampere hours
  std::optional<double> percent;        ///< as the battery itself counts
  std::string status;                   ///< "Charging"; empty when it is not told

  bool operator==(const PowerSupply&) const = default;
};

/// Reads one from its attributes: `attribute` gives the content of a file of this name, without white space at its
/// ends; nothing when it cannot be read. Batteries of mice and the like, and empty battery bays, are `other`.
PowerSupply powerSupplyFrom(const std::function<std::optional<std::string>(const char* name)>& attribute);

/// All batteries as one: by energy where all of them tell it, else by charge, else the mean of their percentages. It is
/// charging when one of them says so; where none says anything, when it is not full and electricity comes from outside.
/// Fails (EBADMSG) when a battery does not tell how full it is.
Outcome<BatteryState, PosixError> combinedBattery(const std::vector<PowerSupply>& supplies);

}  // namespace quorvane
