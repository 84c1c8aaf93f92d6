#include "quorvane/platform/linux/LinuxSystemSensors.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/platform/linux/DirectoryRecords.h"
#include "quorvane/platform/linux/KernelFile.h"
#include "quorvane/platform/linux/PowerSupplies.h"
#include "quorvane/platform/linux/ThermalZones.h"

#include <array>
#include <cerrno>

#include <fcntl.h>

namespace quorvane {

namespace {

constexpr std::size_t mostDevices = 256;

/// The folders of devices in a class of them whose names begin so; most of them are links.
Outcome<std::vector<FilePath>, PosixError> devicesIn(const FilePath& folder, std::string_view prefix) {
  const FileDescriptor open(::open(folder.bytes.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!open.isOpen()) return failure(lastPosixError());
  std::vector<FilePath> devices;
  const auto visited = visitDirectory(open.number(), [&](const char* name, unsigned char) {
    if (std::string_view(name).starts_with(prefix)) devices.push_back(joined(folder, name));
    return devices.size() < mostDevices;
  });
  if (!visited) return failure(visited.error());
  return devices;
}

/// What `read` makes of the attributes of each device.
template <class Read>
auto readAll(const std::vector<FilePath>& devices, Read read) {
  std::vector<decltype(read(nullptr))> all;
  all.reserve(devices.size());
  for (const FilePath& device : devices) {
    all.push_back(read([&](const char* name) -> std::optional<std::string> {
      std::array<char, 128> buffer{};
      const auto text = KernelFile(joined(device, name)).beginning(buffer);
      if (!text) return std::nullopt;
      return std::string(trimmed(*text));
    }));
  }
  return all;
}

}  // namespace

Outcome<BatteryState, PosixError> LinuxSystemSensors::battery() {
  const auto supplies = devicesIn(powerSupplies_, "");
  if (supplies) return combinedBattery(readAll(*supplies, powerSupplyFrom));
  if (supplies.error().isMissing()) return BatteryState{};
  return failure(supplies.error());
}

Outcome<SystemThermalLevel, PosixError> LinuxSystemSensors::thermalLevel() {
  const auto zones = devicesIn(thermalZones_, "thermal_zone");
  if (!zones) return failure(zones.error());
  const auto level = worstThermalLevel(readAll(*zones, thermalZoneFrom));
  if (!level) return failure(PosixError{ENODATA});
  return *level;
}

std::unique_ptr<SystemSensors> makeSystemSensors() { return std::make_unique<LinuxSystemSensors>(FilePath{"/"}); }

}  // namespace quorvane
