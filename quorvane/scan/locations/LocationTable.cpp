#include "quorvane/scan/locations/LocationTable.h"

#include <utility>

namespace quorvane {

const LocationTable& locationTable(HomeLayout layout) {
  switch (layout) {
    case HomeLayout::linux: return linuxLocations();
    case HomeLayout::macos: return macLocations();
  }
  std::unreachable();
}

std::vector<std::string_view> partsOf(const LocationRule& rule) {
  std::vector<std::string_view> parts;
  for (std::string_view rest = rule.parts; !rest.empty();) {
    const std::size_t bar = rest.find('|');
    parts.push_back(rest.substr(0, bar));
    rest.remove_prefix(bar == std::string_view::npos ? rest.size() : bar + 1);
  }
  return parts;
}

CleaningRules cleaningRules(const ScanSettings& settings, const LocationFolders& folders) {
  if (settings.layout == HomeLayout::macos) return macosCleaningRules(settings.folders.home);
  std::vector<CleaningRoot> roots;
  for (const LocationRule& rule : linuxLocations().rules) {
    const FilePath location = joined(folders.at(rule.base), rule.path);
    for (const std::string_view part : partsOf(rule)) roots.push_back({joined(location, part), true});
    if (rule.subject != LocationSubject::parts) roots.push_back({location, rule.subject == LocationSubject::itself});
  }
  return linuxCleaningRules(settings.folders, std::move(roots));
}

}  // namespace quorvane
