#include "quorvane/scan/LeftoverSearch.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>

namespace quorvane {

LeftoverSearch::LeftoverSearch(const ScanServices& services, const ScanSettings& settings, const ScanScope& scope,
                               const LeftoverQuery& application, ScanPauseControl& control)
    : services_(services), settings_(settings), scope_(scope), application_(application), control_(control) {}

Outcome<std::vector<ScanItem>, ScanFault> LeftoverSearch::perform() {
  const auto home = services_.fileSystem.openStartingFolder(settings_.folders.home);
  auto canonicalHome = services_.fileSystem.resolved(settings_.folders.home);
  if (!home || !canonicalHome) return failure(ScanFault::homeUnreadable);
  canonicalHome_ = *std::move(canonicalHome);
  std::vector<LeftoverPlace> places = ApplicationSafetyPolicy::places(application_);
  if (!places.empty()) addLaunchAgents(home->number(), places);
  for (const LeftoverPlace& place : places)
    if (!addItem(home->number(), place)) return failure(ScanFault::cancelled);
  return std::move(items_);
}

void LeftoverSearch::addLaunchAgents(int home, std::vector<LeftoverPlace>& places) {
  constexpr std::string_view path = ApplicationSafetyPolicy::launchAgentsFolder;
  const auto folder = openFolderBelow(services_.fileSystem, home, path);
  FolderListing listing;
  if (!folder || !services_.fileSystem.list(folder->number(), listing)) return;
  std::vector<std::string> names;
  for (const FolderEntry& entry : listing.entries()) names.emplace_back(listing.nameOf(entry));
  std::ranges::sort(names);
  for (const std::string& name : names)
    if (ApplicationSafetyPolicy::ownsLaunchAgent(application_, name))
      places.push_back({std::string(path), name, ApplicationSafetyPolicy::launchAgentVerdict(application_)});
}

bool LeftoverSearch::addItem(int home, const LeftoverPlace& place) {
  if (!control_.waitWhilePaused()) return false;
  const FilePath canonicalPath = joined(joined(canonicalHome_, place.folder), place.name);
  const auto folder = openFolderBelow(services_.fileSystem, home, place.folder);
  if (!folder || scope_.reasonToSkip(canonicalPath)) return true;
  WalkRequest request;
  request.stop = control_.stopToken();
  const auto tree = services_.walker.measure({{folder->number(), place.name}}, request).front();
  if (!tree) return !control_.stopToken().stopRequested();
  ItemVerdict verdict = limitedByMeasurement(place.verdict, *tree);
  items_.push_back({.id = services_.random.uuid(),
                    .url = {joined(joined(settings_.folders.home, place.folder), place.name)},
                    .displayName = withReplacedInvalidUtf8(place.name),
                    .category = ScanCategory::applicationLeftover,
                    .safety = verdict.safety,
                    .reasonKey = std::move(verdict.reasonKey),
                    .size = tree->allocatedBytes,
                    .isSelected = verdict.safety == SafetyLevel::safe,
                    .snapshot = snapshotOf(*tree, canonicalPath),
                    .backupMetadata = std::nullopt});
  return true;
}

}  // namespace quorvane
