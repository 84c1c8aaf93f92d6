#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/Date.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/core/ScanItem.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// Looks once more at what is selected, shortly before it would be cleaned.
namespace ScanSelectionPreflight {

/// Why a selected item has become risky; in the order in which they are looked for.
enum class Demotion {
  running,          ///< a running process uses it
  recentlyWritten,  ///< written in the last ten minutes
  systemService,    ///< the cache of a part of the operating system
};
QV_CASE_NAMES(Demotion, running, recentlyWritten, systemService)

/// "reason.preflight." and the name of the case.
std::string reasonKey(Demotion demotion);

/// What is known of the world at the moment of checking.
struct Observation {
  Date now;
  FilePath cachesRoot;                                                     ///< the user's cache folder
  std::function<std::optional<Date>(const FilePath&)> latestModification;  ///< the newest one inside a location
  std::function<bool(const FilePath&)> isInUse;
};

/// Why a selected, safe item has become risky; nothing for any other.
std::optional<Demotion> demotionOf(const ScanItem& item, const Observation& observation);

/// The same items in the same order. A selected, safe one that has become risky is now `review`, not selected, and has
/// the reason of its demotion; everything else stays as it is.
std::vector<ScanItem> checked(std::vector<ScanItem> items, const Observation& observation);

}  // namespace ScanSelectionPreflight

}  // namespace quorvane
