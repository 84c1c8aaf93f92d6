#include "quorvane/app/cli/arguments/ScannedCategories.h"

#include "quorvane/scan/locations/LocationTable.h"

#include <algorithm>

namespace quorvane {

namespace {

bool finds(const LocationTable& table, ScanCategory category) {
  return std::ranges::count(table.rules, category, &LocationRule::category) > 0 ||
         std::ranges::count(table.knownCaches, category, &KnownCache::category) > 0 ||
         (category == ScanCategory::browserCache && !table.browserBundleFragments.empty());
}

}  // namespace

std::vector<ScanCategory> scannedCategories() {
  std::vector<ScanCategory> found;
  for (const ScanCategory category : allCases<ScanCategory>()) {
    const auto isFound = [&](HomeLayout layout) { return finds(locationTable(layout), category); };
    if (std::ranges::any_of(allCases<HomeLayout>(), isFound)) found.push_back(category);
  }
  return found;
}

std::vector<std::string> scannedCategoryNames() {
  std::vector<std::string> names;
  for (const ScanCategory category : scannedCategories()) names.emplace_back(caseName(category));
  return names;
}

}  // namespace quorvane
