#pragma once

#include "quorvane/base/StopToken.h"
#include "quorvane/health/SystemStatusSnapshot.h"
#include "quorvane/platform/Clock.h"
#include "quorvane/platform/SystemCounters.h"
#include "quorvane/platform/Volumes.h"

#include <chrono>
#include <optional>

namespace quorvane {

/// Where a sample comes from.
struct SystemStatusSources {
  SystemCounters& counters;
  SystemSensors& sensors;
  SystemProcesses& processes;
  Volumes& volumes;
  const Clock& clock;
};

/// What a sample is to hold.
struct SystemSampleRequest {
  bool withProcesses = true;  ///< they cost more than all the rest
  StopToken stop = {};        ///< ends a listing of processes that takes long
};

/// Takes samples, and keeps of each what the next one needs to tell rates. One sample at a time, on any thread.
class SystemStatusService {
 public:
  explicit SystemStatusService(const SystemStatusSources& sources) : sources_(sources) {}

  /// Never fails: an input that cannot be read has its empty value and is named. The load of the processor and of the
  /// network are rates, so the first sample has not measured them. Sensors are asked anew after ten seconds.
  SystemStatusSnapshot sample(const SystemSampleRequest& request = {});

 private:
  using Time = std::chrono::steady_clock::time_point;

  void measureProcessor(SystemStatusSnapshot& snapshot);
  void measureMemory(SystemStatusSnapshot& snapshot);
  void measureDisk(SystemStatusSnapshot& snapshot);
  void measureNetwork(SystemStatusSnapshot& snapshot, Time now);
  void measureSensors(SystemStatusSnapshot& snapshot, Time now);
  void measureUptime(SystemStatusSnapshot& snapshot);
  void listProcesses(SystemStatusSnapshot& snapshot, const SystemSampleRequest& request);

  const SystemStatusSources sources_;
  std::optional<CPUTicks> previousCPUTicks_;
  std::optional<NetworkCounters> previousNetworkCounters_;
  std::optional<Time> previousSampleDate_;  ///< by the clock that nobody sets
  std::optional<Time> sensorsReadAt_;
  std::optional<Time> forgotAt_;  ///< what the counters keep
  std::optional<BatteryState> battery_;
  std::optional<SystemThermalLevel> thermalLevel_;
};

/// A snapshot before the first sample: what is known without measuring.
SystemStatusSnapshot emptySnapshot(SystemCounters& counters);

/// Busy of all ticks between two readings, 0 to 100; a counter that went down counts as one that stood. 0 when none
/// passed.
double busyPercent(const CPUTicks& before, const CPUTicks& now);

}  // namespace quorvane
