#include "quorvane/app/model/HomeSettings.h"

#include "quorvane/base/Assert.h"
#include "quorvane/platform/SystemPlatform.h"

#include <utility>

namespace quorvane {

namespace {

std::vector<FilePath> systemRoots(HomeLayout layout) {
  switch (layout) {
    case HomeLayout::linux: return {{"/opt"}, {"/var/lib/flatpak/app"}};
    case HomeLayout::macos: return {{"/Applications"}};
  }
  std::unreachable();
}

std::vector<FilePath> ownRoots(const ApplicationFolders& folders, HomeLayout layout) {
  switch (layout) {
    case HomeLayout::linux:
      return {joined(folders.data, "flatpak/app"), joined(folders.home, "Applications"),
              joined(folders.home, ".local/opt")};
    case HomeLayout::macos: return {joined(folders.home, "Applications")};
  }
  std::unreachable();
}

}  // namespace

HomeLayout systemHomeLayout() {
  const auto layout = caseFromName<HomeLayout>(systemName());
  if (!layout) abortOnBrokenInvariant("this system has no table of locations", std::source_location::current());
  return *layout;
}

ScanSettings scanSettings(const HomeRequest& request) {
  ScanSettings settings{request.folders, request.layout, {}, systemGitPrograms()};
  if (!request.staysInside) settings.applicationRoots = systemRoots(request.layout);
  for (FilePath& root : ownRoots(request.folders, request.layout))
    if (!request.staysInside || isBelow(root, request.folders.home)) settings.applicationRoots.push_back(root);
  return settings;
}

}  // namespace quorvane
