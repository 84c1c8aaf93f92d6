#pragma once

#include "quorvane/base/FilePath.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The texts below /proc/PID, as far as they are needed here.

namespace quorvane {

struct ProcessStatus {
  std::uint32_t owner = 0;  ///< the real user
  bool hasEnded = false;    ///< nobody has collected it yet

  bool operator==(const ProcessStatus&) const = default;
};

/// Reads /proc/PID/status; nothing when a needed line is missing or damaged.
std::optional<ProcessStatus> processStatusFromText(std::string_view text);

/// Adds the absolute paths of /proc/PID/maps to `paths`, none of them twice in a row. What cannot be understood is
/// passed over: most mappings have no file.
void addMappedPaths(std::string_view maps, std::vector<FilePath>& paths);

/// The number that a folder name in /proc stands for; nothing for other names.
std::optional<std::int32_t> processNumberFromName(std::string_view name);

/// The path of an executable from where /proc/PID/exe leads to, also of one that has been replaced since it was
/// started.
std::string_view pathFromExecutable(std::string_view target);

/// Its last component.
std::string programNameFromExecutable(std::string_view target);

}  // namespace quorvane
