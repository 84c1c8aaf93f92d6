#pragma once

#include "quorvane/base/Date.h"
#include "quorvane/base/JsonRecord.h"
#include "quorvane/base/Outcome.h"
#include "quorvane/developer/DockerResources.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// All that an engine holds at one moment.
struct DockerSnapshot {
  Date checkedAt;
  std::string contextName;
  std::vector<DockerResourceUsage> usages;  ///< one of each kind
  std::vector<DockerImageRecord> images;
  std::vector<DockerContainerRecord> containers;
  std::vector<DockerVolumeRecord> volumes;
  std::vector<DockerBuildCacheRecord> buildCaches;
  std::int64_t runningContainerCount = 0;
  std::optional<DockerCleanupScope> cleanupScope;  ///< absent: the engine could not be pinned, nothing may be removed

  bool operator==(const DockerSnapshot&) const = default;
};
QV_JSON_FIELDS(DockerSnapshot, checkedAt, contextName, usages, images, containers, volumes, buildCaches,
               runningContainerCount, cleanupScope)

/// Something that the client printed and that could not be used.
struct DockerNotice {
  std::string key;  ///< message key
  DockerResourceKind resource = DockerResourceKind::images;
  std::int64_t count = 0;  ///< of lines

  bool operator==(const DockerNotice&) const = default;
};
QV_JSON_FIELDS(DockerNotice, key, resource, count)

/// A snapshot with what is missing from it.
struct DockerSurvey {
  DockerSnapshot snapshot;
  std::vector<DockerNotice> notices;

  bool operator==(const DockerSurvey&) const = default;
};

/// The snapshot pretty-printed with sorted keys, with "safety" on each record, and "notices" where there are any.
std::string jsonText(const DockerSurvey& survey);

/// Reads a snapshot back, from any source: verdicts and notices in it are passed over.
Outcome<DockerSnapshot, JsonError> dockerSnapshotFromJson(std::string_view text);

}  // namespace quorvane
