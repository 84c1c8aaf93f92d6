#include "quorvane/scan/ScanSelectionPreflight.h"

#include <chrono>

namespace quorvane::ScanSelectionPreflight {

namespace {

constexpr std::chrono::seconds recentWrites{600};

/// Also for a date in the future: whoever sets such dates is at work there.
bool isRecent(std::optional<Date> modification, Date now) { return modification && *modification > now - recentWrites; }

bool isSystemCache(const FilePath& location, const FilePath& cachesRoot) {
  const FilePath place = standardised(location);
  return parentOf(place) == standardised(cachesRoot) && leafOf(place).starts_with("com.apple.");
}

}  // namespace

std::string reasonKey(Demotion demotion) { return "reason.preflight." + std::string(caseName(demotion)); }

std::optional<Demotion> demotionOf(const ScanItem& item, const Observation& observation) {
  if (!item.isSelected || item.safety != SafetyLevel::safe) return std::nullopt;
  const FilePath& location = item.url.path;
  if (observation.isInUse(location)) return Demotion::running;
  if (isRecent(observation.latestModification(location), observation.now)) return Demotion::recentlyWritten;
  if (isSystemCache(location, observation.cachesRoot)) return Demotion::systemService;
  return std::nullopt;
}

std::vector<ScanItem> checked(std::vector<ScanItem> items, const Observation& observation) {
  for (ScanItem& item : items) {
    const std::optional<Demotion> demotion = demotionOf(item, observation);
    if (!demotion) continue;
    item.safety = SafetyLevel::review;
    item.isSelected = false;
    item.reasonKey = reasonKey(*demotion);
  }
  return items;
}

}  // namespace quorvane::ScanSelectionPreflight
