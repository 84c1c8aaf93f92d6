#pragma once

#include "quorvane/health/SystemStatusService.h"
#include "tests/support/ManualClock.h"

namespace quorvane {

inline constexpr PosixError unreadable{5};

/// A machine that says what it is told to say.
struct MadeSources final : SystemCounters, SystemSensors, SystemProcesses, Volumes {
  Outcome<CPUTicks, PosixError> ticks = CPUTicks{};
  Outcome<MemoryUse, PosixError> memoryUse = MemoryUse{.used = 25, .total = 100};
  Outcome<NetworkCounters, PosixError> networkCounters = NetworkCounters{};
  Outcome<double, PosixError> uptime = 60.0;
  Outcome<BatteryState, PosixError> batteryState = BatteryState{};
  Outcome<SystemThermalLevel, PosixError> level = SystemThermalLevel::nominal;
  Outcome<std::vector<SystemProcessSample>, PosixError> listed = std::vector<SystemProcessSample>();
  Outcome<VolumeCapacity, PosixError> volume = VolumeCapacity{.total = 100, .available = 40};
  int sensorReadings = 0, forgettings = 0;
  ManualClock time{dateFromTimestamp(1'795'237'443, 900'000'000)};

  SystemStatusSources sources() { return {*this, *this, *this, *this, time}; }

  Outcome<CPUTicks, PosixError> processorTicks() override { return ticks; }
  Outcome<MemoryUse, PosixError> memory() override { return memoryUse; }
  Outcome<NetworkCounters, PosixError> network() override { return networkCounters; }
  Outcome<double, PosixError> uptimeSeconds() override { return uptime; }
  int processorCount() override { return 4; }
  void forgetKept() override { ++forgettings; }
  std::string osVersion() override { return "Made 1"; }
  Outcome<BatteryState, PosixError> battery() override {
    ++sensorReadings;
    return batteryState;
  }
  Outcome<SystemThermalLevel, PosixError> thermalLevel() override { return level; }
  Outcome<std::vector<SystemProcessSample>, PosixError> busiest(std::size_t, StopToken) override { return listed; }
  Outcome<VolumeIdentity, PosixError> identity(int) override { return failure(unreadable); }
  Outcome<VolumeCapacity, PosixError> capacity(const FilePath& path) override {
    if (path != FilePath{"/"}) return failure(unreadable);
    return volume;
  }
  Outcome<std::vector<FilePath>, PosixError> mountPoints() override { return failure(unreadable); }
};

}  // namespace quorvane
