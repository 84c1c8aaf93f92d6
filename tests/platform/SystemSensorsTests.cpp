#include "quorvane/platform/SystemSensors.h"

#include "quorvane/platform/linux/LinuxSystemSensors.h"
#include "quorvane/platform/linux/ThermalZones.h"
#include "tests/support/SystemTree.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace quorvane {
namespace {

/// The attributes of a power supply, each behind its name.
using Attributes = SystemTree::Files;

struct Supply {
  const char* name;
  Attributes attributes;
};

SystemTree treeWith(const std::vector<Supply>& supplies) {
  SystemTree::Files files{{"sys/class/power_supply/.keep", ""}};
  for (const Supply& supply : supplies)
    for (const auto& [name, content] : supply.attributes)
      files.emplace_back(std::string("sys/class/power_supply/") + supply.name + "/" + name, content + "\n");
  return SystemTree(files);
}

Attributes battery(const std::string& now, const std::string& full, const std::string& status) {
  return {{"type", "Battery"}, {"energy_now", now}, {"energy_full", full}, {"status", status}};
}

TEST(BatteryTests, isWhatTheMachineRunsOn) {
  const Attributes mains{{"type", "Mains"}, {"online", "1"}}, unplugged{{"type", "Mains"}, {"online", "0"}};
  const Attributes mouse{{"type", "Battery"}, {"scope", "Device"}, {"capacity", "3"}, {"status", "Discharging"}};
  const Attributes byCharge{{"type", "Battery"}, {"charge_now", "30"}, {"charge_full", "40"}, {"status", "Charging"}};
  const Attributes byBoth{{"type", "Battery"},  {"energy_now", "50"},  {"energy_full", "100"},
                          {"charge_now", "60"}, {"charge_full", "60"}, {"status", "Full"}};
  const Attributes byCapacity{{"type", "Battery"}, {"capacity", "25"}, {"status", "Unknown"}};
  const Attributes emptyBay{{"type", "Battery"}, {"present", "0"}};
  const struct {
    const char* about;
    std::vector<Supply> supplies;
    BatteryState state;
  } cases[] = {
      {"a desktop", {{"AC", mains}}, {}},
      {"a mouse is not the machine", {{"AC", mains}, {"hidpp_battery_0", mouse}}, {}},
      {"a laptop", {{"BAT0", battery("20000000", "50000000", "Discharging")}, {"AC", unplugged}}, {40, false}},
      {"charging", {{"BAT0", battery("20000000", "50000000", "Charging")}, {"AC", mains}}, {40, true}},
      {"full on mains", {{"BAT0", battery("50", "50", "Full")}, {"AC", mains}}, {100, false}},
      {"two of different size, one charging",
       {{"BAT0", battery("10", "10", "Full")}, {"BAT1", battery("20", "50", "Charging")}},
       {50, true}},
      {"by charge", {{"BAT0", byCharge}}, {75, true}},
      {"by charge where that is what all tell", {{"BAT0", byCharge}, {"BAT1", byBoth}}, {90, true}},
      {"different units: the mean", {{"BAT0", byCharge}, {"BAT1", battery("50", "100", "Discharging")}}, {62.5, true}},
      {"no status, on mains", {{"BAT0", byCapacity}, {"USBC0", {{"type", "USB_C"}, {"online", "1"}}}}, {25, true}},
      {"no status, no mains", {{"BAT0", byCapacity}, {"AC", unplugged}}, {25, false}},
      {"an empty bay", {{"BAT0", battery("10", "20", "Discharging")}, {"BAT1", emptyBay}}, {50, false}},
      {"fuller than full", {{"BAT0", battery("60", "50", "Full")}}, {100, false}},
  };
  for (const auto& [about, supplies, state] : cases) {
    const SystemTree tree = treeWith(supplies);
    const auto found = LinuxSystemSensors(tree.root()).battery();
    ASSERT_TRUE(found.has_value()) << about;
    EXPECT_EQ(*found, state) << about;
  }
}

TEST(BatteryTests, isUnknownWhenItTellsNonsense) {
  for (const char* now : {"", "-1", "x", "99999999999999999999999999"}) {
    const SystemTree tree = treeWith({{"BAT0", battery(now, "50", "Charging")}});
    EXPECT_EQ(LinuxSystemSensors(tree.root()).battery().error().code, EBADMSG) << now;
  }
  EXPECT_FALSE(LinuxSystemSensors(treeWith({{"BAT0", battery("5", "0", "")}}).root()).battery())
      << "no division by zero";
  EXPECT_EQ(LinuxSystemSensors(SystemTree({}).root()).battery().value(), BatteryState{});
  EXPECT_EQ(
      LinuxSystemSensors(SystemTree(SystemTree::Files{{"sys/class/power_supply", ""}}).root()).battery().error().code,
      ENOTDIR);
}

TEST(ThermalTests, levelsFollowTheTripPoints) {
  using enum SystemThermalLevel;
  const ThermalZone laptop{.passive = 95'000, .critical = 105'000}, server{.hot = 90'000, .critical = 100'000};
  const struct {
    ThermalZone zone;
    std::int64_t temperature;
    SystemThermalLevel level;
  } cases[] = {
      {laptop, 40'000, nominal},
      {laptop, 84'999, nominal},
      {laptop, 85'000, fair},
      {laptop, 94'999, fair},
      {laptop, 95'000, serious},
      {laptop, 99'999, serious},
      {laptop, 100'000, critical},
      {laptop, -20'000, nominal},
      {server, 69'999, nominal},
      {server, 70'000, fair},
      {server, 80'000, serious},
      {server, 90'000, critical},
      {{.passive = 80'000}, 74'999, nominal},
      {{.passive = 80'000}, 75'000, fair},
      {{.passive = 80'000}, 150'000, serious},
  };
  for (auto [zone, temperature, level] : cases) {
    zone.temperature = temperature;
    EXPECT_EQ(thermalLevelOf(zone), level) << temperature;
  }
  EXPECT_EQ(thermalLevelOf({.temperature = 50'000}), std::nullopt) << "nothing to compare it with";
  EXPECT_EQ(thermalLevelOf(laptop), std::nullopt);
}

TEST(ThermalTests, theWorstZoneCounts) {
  const std::string zones = "sys/class/thermal/thermal_zone";
  const SystemTree tree({{zones + "0/temp", "50000\n"},
                         {zones + "0/trip_point_0_type", "critical\n"},
                         {zones + "0/trip_point_0_temp", "105000\n"},
                         {zones + "1/temp", "91000\n"},
                         {zones + "1/trip_point_0_type", "active\n"},
                         {zones + "1/trip_point_0_temp", "40000\n"},
                         {zones + "1/trip_point_1_type", "passive\n"},
                         {zones + "1/trip_point_1_temp", "0\n"},
                         {zones + "1/trip_point_2_type", "passive\n"},
                         {zones + "1/trip_point_2_temp", "95000\n"},
                         {zones + "2/temp", "48000\n"},
                         {"sys/class/thermal/cooling_device0/type", "Processor\n"}});
  LinuxSystemSensors sensors(tree.root());
  EXPECT_EQ(sensors.thermalLevel().value(), SystemThermalLevel::fair);
  for (const char* unreadable : {"", "hot", "-274000", "999999"}) {
    tree.set(zones + "1/temp", unreadable);
    EXPECT_EQ(sensors.thermalLevel().value(), SystemThermalLevel::nominal) << unreadable;
  }
  tree.set(zones + "0/trip_point_0_temp", "-1\n");
  EXPECT_EQ(sensors.thermalLevel().error().code, ENODATA);
  EXPECT_EQ(LinuxSystemSensors(SystemTree({}).root()).thermalLevel().error().code, ENOENT);
}

}  // namespace
}  // namespace quorvane
