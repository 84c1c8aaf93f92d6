#pragma once

#include "quorvane/base/FilePath.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// The mount points in the text of /proc/self/mountinfo, sorted, each once. A line that cannot be understood makes the
/// whole text unusable: a mount point that is overlooked would be taken for a folder. Points whose folder is gone are
/// left out.
std::optional<std::vector<FilePath>> mountPointsFromMountInfo(std::string_view text);

/// One line of /proc/self/mountinfo.
struct MountedFileSystem {
  FilePath root;        ///< the folder of the file system that stands at the mount point
  FilePath point;       ///< absolute, standardised
  std::string type;     ///< "ext4"
  std::string options;  ///< of the file system, with commas between

  bool operator==(const MountedFileSystem&) const = default;
};

/// Nothing for a line that cannot be understood, and where root or point are no absolute paths.
std::optional<MountedFileSystem> mountedFileSystemFromLine(std::string_view line);

}  // namespace quorvane
