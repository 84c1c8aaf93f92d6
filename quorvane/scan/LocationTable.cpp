#include "quorvane/scan/LocationTable.h"

#include <utility>

namespace quorvane {

const LocationTable& locationTable(HomeLayout layout) {
  switch (layout) {
    case HomeLayout::linux: return linuxLocations();
    case HomeLayout::macos: return macLocations();
  }
  std::unreachable();
}

CleaningRules cleaningRules(const ScanSettings& settings, const LocationFolders& folders) {
  if (settings.layout == HomeLayout::macos) return macosCleaningRules(settings.folders.home);
  std::vector<CleaningRoot> roots;
  for (const LocationRule& rule : linuxLocations().rules)
    roots.push_back({joined(folders.at(rule.base), rule.path), rule.subject == LocationSubject::itself});
  return linuxCleaningRules(settings.folders, std::move(roots));
}

}  // namespace quorvane
