#pragma once

#include "quorvane/platform/PosixError.h"

#include <cstdint>
#include <string>

namespace quorvane {

/// Processor time since the start of the system, in ticks, over all processors.
struct CPUTicks {
  std::uint64_t user = 0;
  std::uint64_t system = 0;
  std::uint64_t idle = 0;
  std::uint64_t nice = 0;

  bool operator==(const CPUTicks&) const = default;
};

/// Bytes that went over the network, over all interfaces that are up and not the loopback.
struct NetworkCounters {
  std::uint64_t received = 0;
  std::uint64_t sent = 0;

  bool operator==(const NetworkCounters&) const = default;
};

/// Bytes of memory: those of the machine, or those of a limit that holds for this process and is lower.
struct MemoryUse {
  std::int64_t used = 0;  ///< what cannot be had by giving up caches; never negative
  std::int64_t total = 0;

  bool operator==(const MemoryUse&) const = default;
};

/// What the system counts about itself. Each call is cheap, waits for no device, and tells why it has no answer: the
/// system's reason, or EBADMSG for one that makes no sense.
class SystemCounters {
 public:
  virtual ~SystemCounters() = default;

  virtual Outcome<CPUTicks, PosixError> processorTicks() = 0;
  virtual Outcome<MemoryUse, PosixError> memory() = 0;
  virtual Outcome<NetworkCounters, PosixError> network() = 0;
  virtual Outcome<double, PosixError> uptimeSeconds() = 0;

  /// How many processors this process may keep busy at once; at least 1.
  virtual int processorCount() = 0;
  /// What seldom changes (the limits that hold for this process; whether an interface that counts nothing is up) is
  /// read for the first answer that needs it and then kept, until this is called.
  virtual void forgetKept() = 0;
  /// Name and version, for people; never empty.
  virtual std::string osVersion() = 0;
};

}  // namespace quorvane
