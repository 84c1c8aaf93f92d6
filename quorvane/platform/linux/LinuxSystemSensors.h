#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/platform/SystemSensors.h"

namespace quorvane {

/// Reads /sys/class/power_supply and /sys/class/thermal below `root`.
class LinuxSystemSensors final : public SystemSensors {
 public:
  explicit LinuxSystemSensors(const FilePath& root)
      : powerSupplies_(joined(root, "sys/class/power_supply")), thermalZones_(joined(root, "sys/class/thermal")) {}

  /// A missing folder says that there is no battery.
  Outcome<BatteryState, PosixError> battery() override;
  Outcome<SystemThermalLevel, PosixError> thermalLevel() override;

 private:
  FilePath powerSupplies_, thermalZones_;
};

}  // namespace quorvane
