#pragma once

#include "quorvane/platform/SystemCounters.h"
#include "quorvane/platform/linux/ControlGroupPlaces.h"
#include "quorvane/platform/linux/KernelFile.h"

#include <optional>
#include <vector>

namespace quorvane {

/// What the control groups of this process leave it. Where they are is found out once.
class ControlGroupLimits {
 public:
  /// Looks below `root`, where the system shows its files ("/").
  explicit ControlGroupLimits(const FilePath& root);

  /// The lowest limit of all levels below `machineBytes`, and what the group that bears it uses of it beyond caches; a
  /// level that does not tell its use is left out. Nothing where the machine's own memory is all that limits. The
  /// limits are kept from one answer to the next, the use is read anew.
  std::optional<MemoryUse> memoryBelow(std::int64_t machineBytes);
  /// The next answer reads them again.
  void forgetMemoryLimits() { areMemoryLimitsKnown_ = false; }

  /// How much processor time there may be in a second, in processors; nothing without a limit. Reads for each answer.
  std::optional<double> processors();

 private:
  struct MemoryLevel {
    KernelFile limit, usage, statistics;
    std::string_view cacheLabel;
    std::optional<std::int64_t> bytes = {};  ///< that it allows, where there is a limit
  };
  struct ProcessorLevel {
    KernelFile quota;                  ///< of version two quota and period
    std::optional<KernelFile> period;  ///< of version one
  };

  void readMemoryLimits();
  static std::optional<std::int64_t> usedBeyondCaches(MemoryLevel& level);
  static std::optional<double> processorsOf(ProcessorLevel& level);

  std::vector<MemoryLevel> memoryLevels_;
  bool areMemoryLimitsKnown_ = false;
  std::vector<ProcessorLevel> processorLevels_;
};

/// The quota and the period of cpu.max as processors; nothing for "max" and for other texts.
std::optional<double> processorsFromQuota(std::string_view quota, std::string_view period);

/// The bytes behind a label of memory.stat; nothing when it is not there.
std::optional<std::int64_t> bytesFromMemoryStatistics(std::string_view label, std::string_view text);

}  // namespace quorvane
