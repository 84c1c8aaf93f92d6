#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// What /proc/PID/stat tells of a process and is wanted here.
struct ProcessStat {
  std::string_view name;         ///< as it calls itself: foreign bytes, mostly at most 15
  std::uint64_t ticks = 0;       ///< processor time of all its threads
  std::uint64_t startTicks = 0;  ///< since the start of the system; tells two processes of one number apart
  std::int64_t residentPages = 0;

  bool operator==(const ProcessStat&) const = default;
};

/// Nothing when a field is missing or damaged. A name may hold spaces, line breaks and parentheses.
std::optional<ProcessStat> processStatFromText(std::string_view text);

/// The name of a process in full: the kernel cuts it, and the path of its executable may tell the rest.
std::string_view fullProcessName(std::string_view name, std::string_view executablePath);

}  // namespace quorvane
