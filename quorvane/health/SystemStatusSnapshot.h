#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/Date.h"
#include "quorvane/base/JsonRecord.h"
#include "quorvane/platform/SystemProcesses.h"
#include "quorvane/platform/SystemSensors.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

QV_JSON_FIELDS(SystemProcessSample, pid, name, executablePath, cpuPercent, memoryBytes)

/// What a sample is put together of.
enum class SystemStatusInput { processor, memory, disk, network, battery, thermal, uptime, processes };
QV_CASE_NAMES(SystemStatusInput, processor, memory, disk, network, battery, thermal, uptime, processes)

/// One sample of the machine. What could not be measured has the value that it has here, and is named.
struct SystemStatusSnapshot {
  Date sampledAt = {};    ///< whole seconds
  double cpuPercent = 0;  ///< 0 to 100, over all processors
  std::int64_t memoryUsedBytes = 0;
  std::int64_t memoryTotalBytes = 0;
  std::int64_t diskAvailableBytes = 0;  ///< that this user can still write
  std::int64_t diskTotalBytes = 0;      ///< of the system volume
  double networkDownloadBytesPerSecond = 0;
  double networkUploadBytesPerSecond = 0;
  std::optional<double> batteryPercent = {};  ///< 0 to 100
  bool isCharging = false;
  SystemThermalLevel thermalLevel = SystemThermalLevel::nominal;
  double uptime = 0;  ///< seconds
  std::string osVersion = {};
  std::int64_t processorCount = 0;
  std::vector<SystemProcessSample> topProcesses = {};  ///< as `SystemProcesses::busiest` orders them
  std::vector<SystemStatusInput> notMeasured = {};     ///< in the order of their declaration

  bool operator==(const SystemStatusSnapshot&) const = default;
};
QV_JSON_FIELDS(SystemStatusSnapshot, sampledAt, cpuPercent, memoryUsedBytes, memoryTotalBytes, diskAvailableBytes,
               diskTotalBytes, networkDownloadBytesPerSecond, networkUploadBytesPerSecond, batteryPercent, isCharging,
               thermalLevel, uptime, osVersion, processorCount, topProcesses, notMeasured)

bool isMeasured(const SystemStatusSnapshot& snapshot, SystemStatusInput input);

/// Used of all memory, 0 to 100; 0 when the total is below 1.
double memoryPercent(const SystemStatusSnapshot& snapshot);

/// Used of the system volume, 0 to 100; 0 when the total is below 1.
double diskUsedPercent(const SystemStatusSnapshot& snapshot);

}  // namespace quorvane
