#include "quorvane/base/Assert.h"
#include "quorvane/platform/linux/PowerSupplies.h"
#include "quorvane/platform/linux/ThermalZones.h"
#include "quorvane/platform/posix/TextWords.h"

#include <cstddef>
#include <cstdint>
#include <map>

namespace {

/// Lines "name=value" as the attributes of a device.
std::map<std::string, std::string, std::less<>> attributesIn(std::string_view text) {
  std::map<std::string, std::string, std::less<>> attributes;
  while (!text.empty()) {
    std::string_view line = quorvane::takeLine(text);
    const std::string name(quorvane::takeUntil(line, '='));
    attributes.emplace(name, line);
  }
  return attributes;
}

}  // namespace

/// Devices, with a NUL between two of them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  std::vector<PowerSupply> supplies;
  std::vector<ThermalZone> zones;
  while (!rest.empty()) {
    const auto attributes = attributesIn(takeUntil(rest, '\0'));
    const auto attribute = [&](const char* name) -> std::optional<std::string> {
      const auto found = attributes.find(std::string_view(name));
      if (found == attributes.end()) return std::nullopt;
      return found->second;
    };
    supplies.push_back(powerSupplyFrom(attribute));
    zones.push_back(thermalZoneFrom(attribute));
  }
  const auto battery = combinedBattery(supplies);
  if (battery && battery->percent)
    require(*battery->percent >= 0 && *battery->percent <= 100, "a percentage lies within its limits");
  (void)worstThermalLevel(zones);
  return 0;
}
