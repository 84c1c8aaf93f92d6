#pragma once

#include "quorvane/developer/DockerEngine.h"

#include <cstdint>
#include <map>
#include <optional>

namespace quorvane {

/// What each kind takes on an engine's disk, in bytes, to the three or four digits that the client gives.
using DockerDiskUsage = std::map<DockerResourceKind, std::int64_t>;

/// Nothing when the client does not tell.
std::optional<DockerDiskUsage> diskUsageOf(const DockerEngine& engine);

/// How much less a kind takes, below zero where it takes more: others use the engine meanwhile. Nothing when one of the
/// two is not known.
std::optional<std::int64_t> freedBytes(const std::optional<DockerDiskUsage>& before,
                                       const std::optional<DockerDiskUsage>& after, DockerResourceKind kind);

}  // namespace quorvane
