#pragma once

#include "quorvane/platform/SystemCounters.h"
#include "quorvane/platform/posix/TextWords.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The texts in which the kernel and the distribution tell about the machine. A reader answers nothing for a text that
// is cut off before the end of a line that it needs, or that makes no sense.

namespace quorvane {

/// Reads the first line of /proc/stat. Interrupts count as system, waiting for disks as idle. What other virtual
/// machines took is left out: this one never had it.
std::optional<CPUTicks> ticksFromStat(std::string_view text);

/// Reads the beginning of /proc/meminfo. Used is what is neither free nor could be had by giving up caches.
std::optional<MemoryUse> memoryFromMeminfo(std::string_view text);

/// The name with the version in a text of os-release, its quotes and escapes taken away.
std::optional<std::string> systemNameFromRelease(std::string_view text);

/// One interface of /proc/net/dev.
struct InterfaceCounters {
  std::string_view name;
  NetworkCounters counters;
};

std::optional<InterfaceCounters> interfaceFromLine(std::string_view line);

/// Calls `visit(InterfaceCounters)` for each interface of /proc/net/dev; whether the text could be understood.
template <class Visit>
bool visitInterfaces(std::string_view text, Visit visit) {
  constexpr int headLines = 2;
  for (int i = 0; i < headLines; ++i)
    if (!takeLine(text).contains('|')) return false;
  if (!text.empty() && !text.ends_with('\n')) return false;
  while (!text.empty()) {
    const auto counted = interfaceFromLine(takeLine(text));
    if (!counted) return false;
    visit(*counted);
  }
  return true;
}

}  // namespace quorvane
