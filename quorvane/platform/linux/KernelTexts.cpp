#include "quorvane/platform/linux/KernelTexts.h"

#include "quorvane/base/FilePath.h"
#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <array>
#include <limits>

namespace quorvane {

namespace {

constexpr std::uint64_t mostTicks = std::numeric_limits<std::uint64_t>::max() / 8;  // several are added up

/// The next line, unless the text is cut off within it.
std::optional<std::string_view> takeWholeLine(std::string_view& text) {
  if (!text.contains('\n')) return std::nullopt;
  return takeLine(text);
}

/// "  16328408 kB" in bytes.
std::optional<std::int64_t> bytesOfKilobytes(std::string_view line) {
  const auto kilobytes = wholeNumber<std::int64_t>(takeWord(line));
  if (!kilobytes || *kilobytes < 0 || *kilobytes > std::numeric_limits<std::int64_t>::max() / 1024) return std::nullopt;
  return *kilobytes * 1024;
}

/// What a shell would make of the value of an assignment.
std::string unquoted(std::string_view value) {
  const char quote = !value.empty() && (value.front() == '"' || value.front() == '\'') ? value.front() : '\0';
  if (quote != '\0') value.remove_prefix(1);
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (quote != '\0' && value[i] == quote) break;
    if (value[i] == '\\' && quote != '\'' && i + 1 < value.size()) ++i;
    text += value[i];
  }
  return text;
}

}  // namespace

std::optional<CPUTicks> ticksFromStat(std::string_view text) {
  auto line = takeWholeLine(text);
  if (!line || takeWord(*line) != "cpu") return std::nullopt;
  enum { user, nice, system, idle, waiting, interrupts, softInterrupts, count };
  std::array<std::uint64_t, count> ticks{};
  for (int i = 0; i < count; ++i) {
    const std::string_view word = takeWord(*line);
    if (word.empty() && i > idle) break;  // old kernels tell no more
    const auto number = wholeNumber<std::uint64_t>(word);
    if (!number || *number > mostTicks) return std::nullopt;
    ticks[static_cast<std::size_t>(i)] = *number;
  }
  return CPUTicks{.user = ticks[user],
                  .system = ticks[system] + ticks[interrupts] + ticks[softInterrupts],
                  .idle = ticks[idle] + ticks[waiting],
                  .nice = ticks[nice]};
}

std::optional<MemoryUse> memoryFromMeminfo(std::string_view text) {
  std::optional<std::int64_t> total, available, free, buffers, cached;
  while (auto line = takeWholeLine(text)) {
    const std::string_view label = takeUntil(*line, ':');
    auto* const wanted = label == "MemTotal"       ? &total
                         : label == "MemAvailable" ? &available
                         : label == "MemFree"      ? &free
                         : label == "Buffers"      ? &buffers
                         : label == "Cached"       ? &cached
                                                   : nullptr;
    if (wanted != nullptr) *wanted = bytesOfKilobytes(*line);
  }
  // Kernels before 3.14 do not say what is available.
  if (!available && free && buffers && cached && *free <= INT64_MAX / 4 && *buffers <= INT64_MAX / 4 &&
      *cached <= INT64_MAX / 4)
    available = *free + *buffers + *cached;
  if (!total || *total == 0 || !available) return std::nullopt;
  return MemoryUse{.used = std::max<std::int64_t>(0, *total - *available), .total = *total};
}

std::optional<std::string> systemNameFromRelease(std::string_view text) {
  constexpr std::size_t longestName = 128;
  while (!text.empty()) {
    std::string_view line = takeLine(text);
    if (takeUntil(line, '=') != "PRETTY_NAME") continue;
    std::string name = unquoted(trimmed(line));
    if (name.empty() || name.size() > longestName || !isValidUtf8(name)) return std::nullopt;
    return name;
  }
  return std::nullopt;
}

std::optional<InterfaceCounters> interfaceFromLine(std::string_view line) {
  if (!line.contains(':')) return std::nullopt;
  InterfaceCounters counted{trimmed(takeUntil(line, ':')), {}};
  if (!isOneComponent(counted.name)) return std::nullopt;
  constexpr int sentColumn = 8;  // behind eight columns about what was received, bytes first
  const auto received = wholeNumber<std::uint64_t>(takeWord(line));
  for (int i = 1; i < sentColumn; ++i) takeWord(line);
  const auto sent = wholeNumber<std::uint64_t>(takeWord(line));
  if (!received || !sent) return std::nullopt;
  counted.counters = {*received, *sent};
  return counted;
}

}  // namespace quorvane
