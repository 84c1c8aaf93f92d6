#pragma once

#include "quorvane/base/JsonRecord.h"
#include "quorvane/core/DockerTargets.h"

#include <cstdint>
#include <optional>
#include <string>

// What an engine holds, as the client lists it. Texts are the client's own and foreign.

namespace quorvane {

/// What all objects of one kind come to.
struct DockerResourceUsage {
  DockerResourceKind kind = DockerResourceKind::images;
  std::int64_t totalCount = 0;
  std::int64_t activeCount = 0;       ///< in use at this moment
  std::int64_t sizeBytes = 0;         ///< on the engine's disk, what they share counted once
  std::int64_t reclaimableBytes = 0;  ///< at most so many by removing all that is not protected

  bool operator==(const DockerResourceUsage&) const = default;
};
QV_JSON_FIELDS(DockerResourceUsage, kind, totalCount, activeCount, sizeBytes, reclaimableBytes)

/// One name of an image; an image with several names has several records.
struct DockerImageRecord {
  static constexpr std::int64_t unknownCount = -1;

  std::string id = {};  ///< full, with "sha256:"
  std::string repository = {};
  std::string tag = {};
  std::string createdSince = {};
  std::int64_t sizeBytes = 0;                  ///< what it shares with other images included
  std::int64_t containerCount = unknownCount;  ///< in any state, made from it; `unknownCount` when that is not certain

  bool operator==(const DockerImageRecord&) const = default;
};
QV_JSON_FIELDS(DockerImageRecord, id, repository, tag, createdSince, sizeBytes, containerCount)

struct DockerContainerRecord {
  std::string id = {};  ///< full
  std::string name = {};
  std::string imageName = {};
  std::string state = {};
  std::string statusDetail = {};
  std::string createdSince = {};
  std::optional<std::int64_t> sizeBytes = {};  ///< of what it has written itself
  std::optional<std::string> composeProject = {};
  std::optional<std::string> startedAt = {};  ///< when it last began to run, as the engine says it

  bool operator==(const DockerContainerRecord&) const = default;
};
QV_JSON_FIELDS(DockerContainerRecord, id, name, imageName, state, statusDetail, createdSince, sizeBytes, composeProject,
               startedAt)

struct DockerVolumeRecord {
  std::string name = {};
  std::string driver = {};
  std::optional<std::int64_t> sizeBytes = {};
  std::optional<std::int64_t> referenceCount = {};  ///< containers that mount it
  std::string labels = {};                          ///< key=value, with commas between
  std::optional<std::string> createdAt = {};        ///< as the engine says it; drivers may tell nothing

  bool operator==(const DockerVolumeRecord&) const = default;
};
QV_JSON_FIELDS(DockerVolumeRecord, name, driver, sizeBytes, referenceCount, labels, createdAt)

struct DockerBuildCacheRecord {
  std::string id = {};
  std::string type = {};
  std::int64_t sizeBytes = 0;
  std::string createdSince = {};
  std::string lastUsedSince = {};
  std::int64_t usageCount = 0;
  bool isShared = false;
  std::optional<bool> isInUse = {};  ///< of a build at this moment; nothing where the client does not say that it is

  bool operator==(const DockerBuildCacheRecord&) const = default;
};
QV_JSON_FIELDS(DockerBuildCacheRecord, id, type, sizeBytes, createdSince, lastUsedSince, usageCount, isShared, isInUse)

}  // namespace quorvane
