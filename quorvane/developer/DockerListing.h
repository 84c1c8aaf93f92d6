#pragma once

#include "quorvane/developer/DockerResources.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the client's listings say, one JSON object a line. Each line is read by itself: one that is no such object,
// lacks a member, or names its object by anything but a full identifier, is left out and counted.

namespace quorvane {

template <class Record>
struct DockerListing {
  std::vector<Record> records;
  std::int64_t undecodedCount = 0;  ///< lines left out

  bool isComplete() const { return undecodedCount == 0; }
  bool operator==(const DockerListing&) const = default;
};

/// A line of the summary, as far as it can be read.
struct DockerUsageLine {
  DockerResourceKind kind = DockerResourceKind::images;
  std::int64_t totalCount = 0;
  std::int64_t activeCount = 0;
  std::int64_t sizeBytes = 0;

  bool operator==(const DockerUsageLine&) const = default;
};

/// Without their `containerCount`, which no listing tells.
DockerListing<DockerImageRecord> dockerImages(std::string_view output);
DockerListing<DockerContainerRecord> dockerContainers(std::string_view output);
/// Without their sizes and references, which stand in another table.
DockerListing<DockerVolumeRecord> dockerVolumes(std::string_view output);
/// A line of a kind that is not known counts as left out, too.
DockerListing<DockerUsageLine> dockerUsageLines(std::string_view output);

/// The JSON texts that stand on the lines, such as the identifiers of a listing or of an inspection.
DockerListing<std::string> dockerTexts(std::string_view output);

/// A whole number of digits alone.
std::optional<std::int64_t> dockerCount(std::string_view text);

/// The lines of an output, without the last empty one and without "\r" at their ends.
std::vector<std::string_view> linesOf(std::string_view output);

}  // namespace quorvane
