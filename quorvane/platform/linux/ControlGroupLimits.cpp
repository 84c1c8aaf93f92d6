#include "quorvane/platform/linux/ControlGroupLimits.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/platform/posix/TextWords.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>

namespace quorvane {

namespace {

using LineBuffer = std::array<char, 64>;

/// The one line of such a file; empty when it cannot be read or is cut off.
std::string_view lineOf(KernelFile& file, LineBuffer& buffer) {
  const auto text = file.beginning(buffer);
  return text && text->ends_with('\n') ? trimmed(*text) : std::string_view();
}

std::string contentOf(const FilePath& path) {
  constexpr std::size_t longest = std::size_t{64} << 20;  // the mounts of a machine full of containers
  std::string buffer;
  const auto text = KernelFile(path).whole(buffer, longest);
  return text ? std::string(*text) : std::string();
}

bool canBeRead(KernelFile& file) {
  LineBuffer buffer{};
  return file.beginning(buffer).has_value();
}

std::optional<std::int64_t> bytesIn(KernelFile& file) {
  LineBuffer buffer{};
  const auto bytes = wholeNumber<std::int64_t>(lineOf(file, buffer));
  return bytes && *bytes >= 0 ? bytes : std::nullopt;
}

}  // namespace

ControlGroupLimits::ControlGroupLimits(const FilePath& root) {
  const std::string groups = contentOf(joined(root, "proc/self/cgroup"));
  const std::string mounts = contentOf(joined(root, "proc/self/mountinfo"));
  const auto file = [&](const ControlGroupFolder& folder, std::string_view name) {
    return KernelFile(joined(joined(root, relativeTo({"/"}, folder.path)), name));
  };
  for (const ControlGroupFolder& folder : controlGroupFolders("memory", groups, mounts)) {
    const bool isTwo = folder.version == ControlGroupVersion::two;
    MemoryLevel level{file(folder, isTwo ? "memory.max" : "memory.limit_in_bytes"),
                      file(folder, isTwo ? "memory.current" : "memory.usage_in_bytes"), file(folder, "memory.stat"),
                      isTwo ? "inactive_file" : "total_inactive_file"};
    if (canBeRead(level.limit)) memoryLevels_.push_back(std::move(level));
  }
  for (const ControlGroupFolder& folder : controlGroupFolders("cpu", groups, mounts)) {
    const bool isTwo = folder.version == ControlGroupVersion::two;
    ProcessorLevel level{file(folder, isTwo ? "cpu.max" : "cpu.cfs_quota_us"), std::nullopt};
    if (!isTwo) level.period = file(folder, "cpu.cfs_period_us");
    if (canBeRead(level.quota)) processorLevels_.push_back(std::move(level));
  }
}

std::optional<MemoryUse> ControlGroupLimits::memoryBelow(std::int64_t machineBytes) {
  if (!areMemoryLimitsKnown_) readMemoryLimits();
  std::optional<MemoryUse> lowest;
  for (MemoryLevel& level : memoryLevels_) {
    if (!level.bytes || *level.bytes >= (lowest ? lowest->total : machineBytes)) continue;
    if (const auto used = usedBeyondCaches(level)) lowest = MemoryUse{std::min(*level.bytes, *used), *level.bytes};
  }
  return lowest;
}

void ControlGroupLimits::readMemoryLimits() {
  for (MemoryLevel& level : memoryLevels_) {
    level.bytes = bytesIn(level.limit);  // "max" is none
    if (level.bytes == 0) level.bytes.reset();
  }
  areMemoryLimitsKnown_ = true;
}

std::optional<std::int64_t> ControlGroupLimits::usedBeyondCaches(MemoryLevel& level) {
  const auto usage = bytesIn(level.usage);
  if (!usage) return std::nullopt;
  std::array<char, 16384> buffer{};
  const auto text = level.statistics.whole(buffer);
  const auto caches = text ? bytesFromMemoryStatistics(level.cacheLabel, *text) : std::nullopt;
  return std::max<std::int64_t>(0, *usage - caches.value_or(0));
}

std::optional<double> ControlGroupLimits::processors() {
  std::optional<double> fewest;
  for (ProcessorLevel& level : processorLevels_) {
    const auto processors = processorsOf(level);
    if (processors && (!fewest || *processors < *fewest)) fewest = processors;
  }
  return fewest;
}

std::optional<double> ControlGroupLimits::processorsOf(ProcessorLevel& level) {
  LineBuffer quotaBuffer{}, periodBuffer{};
  std::string_view line = lineOf(level.quota, quotaBuffer);
  const std::string_view quota = takeWord(line);
  return processorsFromQuota(quota, level.period ? lineOf(*level.period, periodBuffer) : takeWord(line));
}

std::optional<double> processorsFromQuota(std::string_view quota, std::string_view period) {
  const auto allowed = wholeNumber<std::int64_t>(quota);  // "max" of version two and "-1" of version one are none
  const auto each = wholeNumber<std::int64_t>(period);
  if (!allowed || !each || *allowed <= 0 || *each <= 0) return std::nullopt;
  return static_cast<double>(*allowed) / static_cast<double>(*each);
}

std::optional<std::int64_t> bytesFromMemoryStatistics(std::string_view label, std::string_view text) {
  while (text.contains('\n')) {
    std::string_view line = takeLine(text);
    if (takeWord(line) != label) continue;
    const auto bytes = wholeNumber<std::int64_t>(takeWord(line));
    return bytes && *bytes >= 0 ? bytes : std::nullopt;
  }
  return std::nullopt;
}

}  // namespace quorvane
