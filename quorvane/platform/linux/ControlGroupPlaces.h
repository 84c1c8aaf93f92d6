#pragma once

#include "quorvane/base/FilePath.h"

#include <string_view>
#include <vector>

namespace quorvane {

/// The two ways in which the kernel shows control groups; both may be in use at once.
enum class ControlGroupVersion { one, two };

/// A folder that may limit what this process has.
struct ControlGroupFolder {
  ControlGroupVersion version = ControlGroupVersion::two;
  FilePath path;

  bool operator==(const ControlGroupFolder&) const = default;
};

/// The folders that may limit `controller` ("cpu", "memory") for a process: its own group and all above it as far as
/// they can be seen, the innermost first. `groups` is /proc/PID/cgroup, `mounts` /proc/PID/mountinfo. Lines that cannot
/// be understood are passed over: a limit that is not seen is one that is not there.
std::vector<ControlGroupFolder> controlGroupFolders(std::string_view controller, std::string_view groups,
                                                    std::string_view mounts);

}  // namespace quorvane
