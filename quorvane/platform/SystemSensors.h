#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/platform/PosixError.h"

#include <optional>

namespace quorvane {

/// How hard the machine has to work at staying cool, the mildest first.
enum class SystemThermalLevel { nominal, fair, serious, critical };
QV_CASE_NAMES(SystemThermalLevel, nominal, fair, serious, critical)

/// The batteries of the machine taken together.
struct BatteryState {
  std::optional<double> percent;  ///< 0 to 100; nothing without a battery
  bool isCharging = false;

  bool operator==(const BatteryState&) const = default;
};

/// What has to be asked of devices, which may take milliseconds: to be looked at less often than counters.
class SystemSensors {
 public:
  virtual ~SystemSensors() = default;

  /// That there is no battery is an answer. Fails when the system does not tell, or one cannot be read.
  virtual Outcome<BatteryState, PosixError> battery() = 0;

  /// The level of the hottest part. Fails when no part tells both its temperature and what is too hot for it.
  virtual Outcome<SystemThermalLevel, PosixError> thermalLevel() = 0;
};

}  // namespace quorvane
