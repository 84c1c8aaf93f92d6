#include "quorvane/platform/linux/ControlGroupPlaces.h"

#include "quorvane/platform/linux/MountInfo.h"
#include "quorvane/platform/posix/TextWords.h"

#include <algorithm>

namespace quorvane {

namespace {

constexpr std::size_t mostLevels = 32;

bool isAmong(std::string_view word, std::string_view commaSeparated) {
  while (!commaSeparated.empty())
    if (takeUntil(commaSeparated, ',') == word) return true;
  return false;
}

/// The group that the process is in, by the lines "4:memory:/path" and, of version two, "0::/path".
std::optional<FilePath> groupOf(ControlGroupVersion version, std::string_view controller, std::string_view groups) {
  while (!groups.empty()) {
    std::string_view line = takeLine(groups);
    const std::string_view number = takeUntil(line, ':');
    const std::string_view controllers = takeUntil(line, ':');
    const bool isWanted =
        version == ControlGroupVersion::two ? number == "0" && controllers.empty() : isAmong(controller, controllers);
    if (isWanted && isAbsolute(line)) return standardised({std::string(line)});
  }
  return std::nullopt;
}

bool isMountOf(ControlGroupVersion version, std::string_view controller, const MountedFileSystem& mount) {
  switch (version) {
    case ControlGroupVersion::one: return mount.type == "cgroup" && isAmong(controller, mount.options);
    case ControlGroupVersion::two: return mount.type == "cgroup2";
  }
  return false;
}

/// A container sees its own group at the mount point, whatever the group is called outside.
FilePath innermostFolder(const MountedFileSystem& mount, const FilePath& group) {
  if (!isAtOrBelow(group, mount.root)) return mount.point;
  return joined(mount.point, relativeTo(mount.root, group));
}

void addLevels(ControlGroupVersion version, const MountedFileSystem& mount, const FilePath& group,
               std::vector<ControlGroupFolder>& folders) {
  FilePath folder = innermostFolder(mount, group);
  for (std::size_t level = 0; level < mostLevels && isAtOrBelow(folder, mount.point); ++level) {
    folders.push_back({version, folder});
    if (folder == mount.point) return;
    folder = parentOf(folder);
  }
}

}  // namespace

std::vector<ControlGroupFolder> controlGroupFolders(std::string_view controller, std::string_view groups,
                                                    std::string_view mounts) {
  std::vector<ControlGroupFolder> folders;
  for (const ControlGroupVersion version : {ControlGroupVersion::two, ControlGroupVersion::one}) {
    const auto group = groupOf(version, controller, groups);
    if (!group) continue;
    for (std::string_view rest = mounts; !rest.empty();) {
      const auto mount = mountedFileSystemFromLine(takeLine(rest));
      if (!mount || !isMountOf(version, controller, *mount)) continue;
      addLevels(version, *mount, *group, folders);
      break;
    }
  }
  return folders;
}

}  // namespace quorvane
