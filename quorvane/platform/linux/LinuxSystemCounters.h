#pragma once

#include "quorvane/platform/SystemCounters.h"
#include "quorvane/platform/linux/ControlGroupLimits.h"
#include "quorvane/platform/linux/KernelFile.h"
#include "quorvane/platform/linux/KernelTexts.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace quorvane {

/// How many processors the kernel lets this process run on.
int allowedProcessorCount();

/// Where the system shows its files, and what only a call of it tells.
struct SystemCountersRequest {
  FilePath root{"/"};
  std::function<int()> allowedProcessors = allowedProcessorCount;
};

/// Reads /proc, /sys/class/net and the control groups; files stay open from one call to the next. The flags of an
/// interface are read again when it counted something.
class LinuxSystemCounters final : public SystemCounters {
 public:
  explicit LinuxSystemCounters(SystemCountersRequest request);

  Outcome<CPUTicks, PosixError> processorTicks() override;
  Outcome<MemoryUse, PosixError> memory() override;
  /// An interface whose flags cannot be read counts unless it is called "lo".
  Outcome<NetworkCounters, PosixError> network() override;
  /// By the clock that goes on while the machine sleeps.
  Outcome<double, PosixError> uptimeSeconds() override;
  int processorCount() override;
  void forgetKept() override;
  std::string osVersion() override { return osVersion_; }

 private:
  struct Interface {
    KernelFile flags;
    std::uint64_t seen = 0;                        ///< the reading that listed it last
    std::optional<NetworkCounters> countedThen{};  ///< when the flags were read
    bool isCounted = false;
  };

  bool counts(const InterfaceCounters& interface);
  static bool isUp(KernelFile& flags, std::string_view interface);
  void forgetInterfacesThatWent();

  SystemCountersRequest request_;
  KernelFile stat_, meminfo_, interfaces_;
  std::string interfacesText_;  ///< room for reading them
  std::map<std::string, Interface, std::less<>> known_;
  std::uint64_t reading_ = 0;
  ControlGroupLimits limits_;
  std::optional<int> processorCount_;
  std::string osVersion_;
};

}  // namespace quorvane
