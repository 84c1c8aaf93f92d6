#include "quorvane/platform/linux/PowerSupplies.h"

#include "quorvane/platform/posix/TextWords.h"

#include <algorithm>
#include <cerrno>

namespace quorvane {

namespace {

constexpr double fullPercent = 100;

class AttributeReader {
 public:
  explicit AttributeReader(const std::function<std::optional<std::string>(const char*)>& attribute)
      : attribute_(attribute) {}

  std::string text(const char* name) const { return attribute_(name).value_or(""); }

  std::optional<std::int64_t> number(const char* name) const {
    const auto number = wholeNumber<std::int64_t>(text(name));
    return number && *number >= 0 ? number : std::nullopt;
  }

  std::optional<BatteryCharge> charge(const char* now, const char* full) const {
    const auto nowNumber = number(now), fullNumber = number(full);
    if (!nowNumber || !fullNumber || *fullNumber == 0) return std::nullopt;
    return BatteryCharge{*nowNumber, *fullNumber};
  }

 private:
  const std::function<std::optional<std::string>(const char*)>& attribute_;
};

PowerSupply::Kind kindOf(const AttributeReader& attributes) {
  const std::string type = attributes.text("type");
  // Chargers on a USB socket call themselves by many names that all begin so.
  if (type == "Mains" || type.starts_with("USB")) return PowerSupply::Kind::mains;
  const bool isOfMachine = attributes.text("scope") != "Device" && attributes.number("present").value_or(1) != 0;
  return type == "Battery" && isOfMachine ? PowerSupply::Kind::battery : PowerSupply::Kind::other;
}

/// The batteries' sums of such charges; nothing when one of them does not tell it.
std::optional<double> percentBy(std::optional<BatteryCharge> PowerSupply::*charge,
                                const std::vector<const PowerSupply*>& batteries) {
  double now = 0, most = 0;
  for (const PowerSupply* battery : batteries) {
    const auto& told = battery->*charge;
    if (!told) return std::nullopt;
    now += static_cast<double>(told->now);
    most += static_cast<double>(told->full);
  }
  return now / most * fullPercent;
}

/// How full a battery is by whatever it tells.
std::optional<double> percentOf(const PowerSupply& battery) {
  for (const auto charge : {&PowerSupply::energy, &PowerSupply::charge})
    if (const auto percent = percentBy(charge, {&battery})) return percent;
  return battery.percent;
}

std::optional<double> meanPercent(const std::vector<const PowerSupply*>& batteries) {
  double sum = 0;
  for (const PowerSupply* battery : batteries) {
    const auto percent = percentOf(*battery);
    if (!percent) return std::nullopt;
    sum += *percent;
  }
  return sum / static_cast<double>(batteries.size());
}

std::optional<double> combinedPercent(const std::vector<const PowerSupply*>& batteries) {
  for (const auto charge : {&PowerSupply::energy, &PowerSupply::charge})
    if (const auto percent = percentBy(charge, batteries)) return percent;
  return meanPercent(batteries);
}

bool saysNothing(const PowerSupply* battery) { return battery->status.empty() || battery->status == "Unknown"; }

}  // namespace

PowerSupply powerSupplyFrom(const std::function<std::optional<std::string>(const char* name)>& attribute) {
  const AttributeReader attributes(attribute);
  PowerSupply supply;
  supply.kind = kindOf(attributes);
  switch (supply.kind) {
    case PowerSupply::Kind::other: break;
    case PowerSupply::Kind::mains: supply.isOnline = attributes.number("online").value_or(0) != 0; break;
    case PowerSupply::Kind::battery:
      supply.energy = attributes.charge("energy_now", "energy_full");
      supply.charge = attributes.charge("charge_now", "charge_full");
      if (const auto capacity = attributes.number("capacity")) supply.percent = static_cast<double>(*capacity);
      supply.status = attributes.text("status");
  }
  return supply;
}

Outcome<BatteryState, PosixError> combinedBattery(const std::vector<PowerSupply>& supplies) {
  std::vector<const PowerSupply*> batteries;
  bool isOnMains = false;
  for (const PowerSupply& supply : supplies) {
    if (supply.kind == PowerSupply::Kind::battery) batteries.push_back(&supply);
    isOnMains |= supply.isOnline;
  }
  if (batteries.empty()) return BatteryState{};

  BatteryState state{combinedPercent(batteries), false};
  if (!state.percent) return failure(PosixError{EBADMSG});
  state.percent = std::clamp(*state.percent, 0.0, fullPercent);
  state.isCharging = std::ranges::all_of(batteries, saysNothing)
                         ? isOnMains && *state.percent < fullPercent
                         : std::ranges::count(batteries, "Charging", &PowerSupply::status) > 0;
  return state;
}

}  // namespace quorvane
