#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/StopToken.h"
#include "quorvane/platform/PosixError.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace quorvane {

/// One running program and what it takes.
struct SystemProcessSample {
  std::int32_t pid = 0;
  std::string name = {};         ///< foreign bytes
  FilePath executablePath = {};  ///< empty where the system does not tell it
  double cpuPercent = 0;         ///< of one processor, so that two busy threads are 200
  std::int64_t memoryBytes = 0;  ///< resident, shared parts included

  bool operator==(const SystemProcessSample&) const = default;
};

/// The busiest first; of equal ones the largest, then by number.
inline bool isBusier(const SystemProcessSample& left, const SystemProcessSample& right) {
  return std::tuple(right.cpuPercent, right.memoryBytes, left.pid) <
         std::tuple(left.cpuPercent, left.memoryBytes, right.pid);
}

/// The largest first; of equal ones the busiest, then by number.
inline bool isLarger(const SystemProcessSample& left, const SystemProcessSample& right) {
  return std::tuple(right.memoryBytes, right.cpuPercent, left.pid) <
         std::tuple(left.memoryBytes, left.cpuPercent, right.pid);
}

/// The processes that take the most.
class SystemProcesses {
 public:
  virtual ~SystemProcesses() = default;

  /// The `most` busiest by processor, the busiest first and of equal ones the largest, then those of the `most` largest
  /// by memory that are not among them, the largest first. The load is that since the call before; of the first call it
  /// may be 0 for all of them.
  virtual Outcome<std::vector<SystemProcessSample>, PosixError> busiest(std::size_t most, StopToken stop) = 0;
};

}  // namespace quorvane
