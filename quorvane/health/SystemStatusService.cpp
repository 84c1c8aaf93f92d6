#include "quorvane/health/SystemStatusService.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t mostOfAKind = 10;
constexpr double leastSeconds = 0.001;
constexpr std::chrono::seconds sensorsStayFresh{10}, countersStayKept{60};

double increase(std::uint64_t before, std::uint64_t now) {
  return now > before ? static_cast<double>(now - before) : 0;
}

void leaveOut(SystemStatusSnapshot& snapshot, SystemStatusInput input) { snapshot.notMeasured.push_back(input); }

}  // namespace

double busyPercent(const CPUTicks& before, const CPUTicks& now) {
  const double busy =
      increase(before.user, now.user) + increase(before.system, now.system) + increase(before.nice, now.nice);
  const double all = busy + increase(before.idle, now.idle);
  return all > 0 ? std::clamp(busy / all * 100, 0.0, 100.0) : 0;
}

SystemStatusSnapshot emptySnapshot(SystemCounters& counters) {
  SystemStatusSnapshot snapshot;
  snapshot.osVersion = counters.osVersion();
  snapshot.processorCount = counters.processorCount();
  return snapshot;
}

SystemStatusSnapshot SystemStatusService::sample(const SystemSampleRequest& request) {
  const Time now = sources_.clock.uptime();
  if (!forgotAt_ || now - *forgotAt_ >= countersStayKept) {
    sources_.counters.forgetKept();
    forgotAt_ = now;
  }
  SystemStatusSnapshot snapshot = emptySnapshot(sources_.counters);
  snapshot.sampledAt = wholeSeconds(sources_.clock.now());
  measureProcessor(snapshot);
  measureMemory(snapshot);
  measureDisk(snapshot);
  measureNetwork(snapshot, now);
  measureSensors(snapshot, now);
  measureUptime(snapshot);
  if (request.withProcesses) listProcesses(snapshot, request);
  previousSampleDate_ = now;
  return snapshot;
}

void SystemStatusService::measureProcessor(SystemStatusSnapshot& snapshot) {
  const auto outcome = sources_.counters.processorTicks();
  const CPUTicks ticks = outcome.value_or(CPUTicks{});
  if (outcome && previousCPUTicks_) {
    snapshot.cpuPercent = busyPercent(*previousCPUTicks_, ticks);
  } else {
    leaveOut(snapshot, SystemStatusInput::processor);
  }
  previousCPUTicks_ = outcome ? std::optional(ticks) : std::nullopt;
}

void SystemStatusService::measureMemory(SystemStatusSnapshot& snapshot) {
  const auto memory = sources_.counters.memory();
  if (!memory) return leaveOut(snapshot, SystemStatusInput::memory);
  snapshot.memoryUsedBytes = memory->used;
  snapshot.memoryTotalBytes = memory->total;
}

void SystemStatusService::measureDisk(SystemStatusSnapshot& snapshot) {
  const auto capacity = sources_.volumes.capacity({"/"});
  if (!capacity) return leaveOut(snapshot, SystemStatusInput::disk);
  snapshot.diskAvailableBytes = capacity->available;
  snapshot.diskTotalBytes = capacity->total;
}

void SystemStatusService::measureNetwork(SystemStatusSnapshot& snapshot, Time now) {
  const auto outcome = sources_.counters.network();
  const auto before = std::exchange(previousNetworkCounters_, outcome ? std::optional(*outcome) : std::nullopt);
  if (!outcome || !before || !previousSampleDate_) return leaveOut(snapshot, SystemStatusInput::network);
  const double elapsed = std::max(leastSeconds, std::chrono::duration<double>(now - *previousSampleDate_).count());
  snapshot.networkDownloadBytesPerSecond = increase(before->received, outcome->received) / elapsed;
  snapshot.networkUploadBytesPerSecond = increase(before->sent, outcome->sent) / elapsed;
}

void SystemStatusService::measureSensors(SystemStatusSnapshot& snapshot, Time now) {
  if (!sensorsReadAt_ || now - *sensorsReadAt_ >= sensorsStayFresh) {
    const auto battery = sources_.sensors.battery();
    battery_ = battery ? std::optional(*battery) : std::nullopt;
    const auto level = sources_.sensors.thermalLevel();
    thermalLevel_ = level ? std::optional(*level) : std::nullopt;
    sensorsReadAt_ = now;
  }
  if (battery_) {
    snapshot.batteryPercent = battery_->percent;
    snapshot.isCharging = battery_->isCharging;
  } else {
    leaveOut(snapshot, SystemStatusInput::battery);
  }
  if (thermalLevel_) {
    snapshot.thermalLevel = *thermalLevel_;
  } else {
    leaveOut(snapshot, SystemStatusInput::thermal);
  }
}

void SystemStatusService::measureUptime(SystemStatusSnapshot& snapshot) {
  const auto seconds = sources_.counters.uptimeSeconds();
  if (!seconds) return leaveOut(snapshot, SystemStatusInput::uptime);
  snapshot.uptime = *seconds;
}

void SystemStatusService::listProcesses(SystemStatusSnapshot& snapshot, const SystemSampleRequest& request) {
  auto processes = sources_.processes.busiest(mostOfAKind, request.stop);
  if (!processes) return leaveOut(snapshot, SystemStatusInput::processes);
  snapshot.topProcesses = *std::move(processes);
}

}  // namespace quorvane
