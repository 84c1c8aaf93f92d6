#pragma once

#include "quorvane/developer/DockerListing.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// What the table of disk usage tells of one volume.
struct DockerVolumeUsage {
  std::optional<std::int64_t> referenceCount;
  std::optional<std::int64_t> sizeBytes;

  bool operator==(const DockerVolumeUsage&) const = default;
};

/// What the text of the detailed disk usage holds. A table that is not there, stands there twice, or has other columns
/// than expected, is not read at all; a row that does not fit its table is left out and counted.
struct DockerUsageTables {
  bool hasVolumes = false;
  std::map<std::string, DockerVolumeUsage, std::less<>> volumes;  ///< by name; one that has two rows has no usage
  std::int64_t undecodedVolumeCount = 0;
  bool hasBuildCache = false;
  DockerListing<DockerBuildCacheRecord> buildCaches;

  bool operator==(const DockerUsageTables&) const = default;
};

DockerUsageTables dockerUsageTables(std::string_view output);

}  // namespace quorvane
