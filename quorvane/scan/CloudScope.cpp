#include "quorvane/scan/CloudScope.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

namespace quorvane {

namespace {

constexpr std::array<std::string_view, 2> macosFolders = {"Library/CloudStorage", "Library/Mobile Documents"};

constexpr std::array<std::string_view, 22> linuxFolders = {
    "Dropbox",     "Nextcloud",    "ownCloud",    "OneDrive",     "Google Drive",   "GoogleDrive",
    "pCloudDrive", "pCloud Drive", "MEGA",        "MEGAsync",     "Insync",         "Seafile",
    "Sync",        "Proton Drive", "ProtonDrive", "Tresorit",     "SpiderOak Hive", "Yandex.Disk",
    "Koofr",       "Box",          "Box Sync",    "iCloud Drive",
};

std::span<const std::string_view> foldersOf(HomeLayout layout) {
  switch (layout) {
    case HomeLayout::linux: return linuxFolders;
    case HomeLayout::macos: return macosFolders;
  }
  std::unreachable();
}

/// A second account gets a second folder: "Dropbox (Work)", "OneDrive - Work".
bool isNamedAfter(std::string_view service, std::string_view name) {
  if (!name.starts_with(service)) return false;
  const std::string_view account = name.substr(service.size());
  return account.empty() || account.starts_with(" (") || account.starts_with(" - ") || account.starts_with('-');
}

}  // namespace

CloudScope::CloudScope(FileSystem& fileSystem, const FilePath& home, HomeLayout layout)
    : home_(standardised(home)), layout_(layout) {
  if (auto resolved = fileSystem.resolved(home_)) home_ = *std::move(resolved);
  for (const std::string_view name : foldersOf(layout)) {
    const FilePath folder = joined(home_, name);
    folders_.push_back(folder);
    if (auto resolved = fileSystem.resolved(folder)) folders_.push_back(*std::move(resolved));
  }
}

bool CloudScope::touches(const FilePath& canonicalPath) const {
  return isNamedLikeOne(canonicalPath) ||
         std::ranges::any_of(folders_, [&](const FilePath& folder) { return overlap(canonicalPath, folder); });
}

bool CloudScope::isNamedLikeOne(const FilePath& canonicalPath) const {
  if (layout_ != HomeLayout::linux || !isBelow(canonicalPath, home_)) return false;
  const std::string_view name = componentsOf(relativeTo(home_, canonicalPath)).front();
  return std::ranges::any_of(linuxFolders, [&](std::string_view service) { return isNamedAfter(service, name); });
}

}  // namespace quorvane
