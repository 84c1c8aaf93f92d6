#include "quorvane/developer/DockerUsageTables.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/developer/DockerSizeText.h"

#include <algorithm>
#include <span>

namespace quorvane {

namespace {

using Columns = std::vector<std::string_view>;
using Lines = std::span<const std::string_view>;

constexpr std::string_view volumesHeading = "Local Volumes space usage:";
constexpr std::string_view buildCacheHeading = "Build cache usage:";
const Columns volumeColumns{"VOLUME NAME", "LINKS", "SIZE"};
const Columns buildCacheColumns{"CACHE ID", "CACHE TYPE", "SIZE", "CREATED", "LAST USED", "USAGE", "SHARED"};

/// The parts between runs of two or more blanks.
Columns columnsOf(std::string_view line) {
  Columns columns;
  line = trimmed(line);
  while (!line.empty()) {
    const std::size_t end = std::min(line.find("  "), line.size());
    columns.push_back(line.substr(0, end));
    line.remove_prefix(std::min(line.find_first_not_of(' ', end), line.size()));
  }
  return columns;
}

/// The rows of the one table below this heading; nothing where that is not certain.
std::optional<Lines> rowsBelow(Lines lines, std::string_view heading, const Columns& columns) {
  const auto isHeading = [&](std::string_view line) { return line.starts_with(heading); };
  if (std::ranges::count_if(lines, isHeading) != 1) return std::nullopt;
  const auto isEmpty = [](std::string_view line) { return trimmed(line).empty(); };
  const auto header = std::find_if_not(std::ranges::find_if(lines, isHeading) + 1, lines.end(), isEmpty);
  if (header == lines.end() || columnsOf(*header) != columns) return std::nullopt;
  return Lines(header + 1, std::find_if(header + 1, lines.end(), isEmpty));
}

/// The client writes one such mark behind the identifier of what a build uses.
bool takeInUseMark(std::string_view& id) {
  const bool isInUse = id.ends_with('*');
  if (isInUse) id.remove_suffix(1);
  return isInUse;
}

std::optional<DockerBuildCacheRecord> buildCacheFrom(Columns columns) {
  // One that was never used has an empty column there.
  if (columns.size() + 1 == buildCacheColumns.size()) columns.insert(columns.begin() + 4, "");
  if (columns.size() != buildCacheColumns.size()) return std::nullopt;
  const auto size = dockerSize(columns[2]), uses = dockerCount(columns[5]);
  const bool isShared = columns[6] == "true";
  if (!size || !uses || (!isShared && columns[6] != "false")) return std::nullopt;
  const bool isInUse = takeInUseMark(columns[0]);
  return DockerBuildCacheRecord{.id = std::string(columns[0]),
                                .type = std::string(columns[1]),
                                .sizeBytes = *size,
                                .createdSince = std::string(columns[3]),
                                .lastUsedSince = std::string(columns[4]),
                                .usageCount = *uses,
                                .isShared = isShared,
                                .isInUse = isInUse ? std::optional(true) : std::nullopt};
}

void readVolumes(DockerUsageTables& tables, Lines rows) {
  for (const std::string_view row : rows) {
    const Columns columns = columnsOf(row);
    if (columns.size() != volumeColumns.size()) {
      ++tables.undecodedVolumeCount;
      continue;
    }
    const auto [place, isNew] = tables.volumes.try_emplace(std::string(columns[0]));
    if (isNew) {
      place->second = {dockerCount(columns[1]), dockerSize(columns[2])};
    } else {
      place->second = {};
    }
  }
}

void readBuildCache(DockerUsageTables& tables, Lines rows) {
  for (const std::string_view row : rows) {
    if (auto record = buildCacheFrom(columnsOf(row))) {
      tables.buildCaches.records.push_back(*std::move(record));
    } else {
      ++tables.buildCaches.undecodedCount;
    }
  }
}

}  // namespace

DockerUsageTables dockerUsageTables(std::string_view output) {
  const std::vector<std::string_view> lines = linesOf(output);
  DockerUsageTables tables;
  if (const auto rows = rowsBelow(lines, volumesHeading, volumeColumns)) {
    tables.hasVolumes = true;
    readVolumes(tables, *rows);
  }
  if (const auto rows = rowsBelow(lines, buildCacheHeading, buildCacheColumns)) {
    tables.hasBuildCache = true;
    readBuildCache(tables, *rows);
  }
  return tables;
}

}  // namespace quorvane
