#pragma once

#include "quorvane/base/FilePath.h"

#include <optional>
#include <string_view>
#include <vector>

namespace quorvane {

/// The mount points in the text of /proc/self/mountinfo, sorted, each once. A line that cannot be understood makes the
/// whole text unusable: a mount point that is overlooked would be taken for a folder. Points whose folder is gone are
/// left out.
std::optional<std::vector<FilePath>> mountPointsFromMountInfo(std::string_view text);

}  // namespace quorvane
