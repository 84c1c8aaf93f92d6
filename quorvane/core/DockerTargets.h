#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/JsonRecord.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What a removal by the Docker client acts on, as the history keeps it.

namespace quorvane {

/// In JSON its number.
enum class DockerResourceKind { images, containers, volumes, buildCache };

inline constexpr std::array allDockerResourceKinds{DockerResourceKind::images, DockerResourceKind::containers,
                                                   DockerResourceKind::volumes, DockerResourceKind::buildCache};

/// "docker.resource." and the name of the case.
std::string titleKey(DockerResourceKind kind);
/// The same and ".detail".
std::string detailKey(DockerResourceKind kind);

/// One engine, and the way to it.
struct DockerCleanupScope {
  std::string context;   ///< name of the client's context
  std::string endpoint;  ///< the address of the engine in that context
  std::string engineID;  ///< what the engine says that it is

  bool operator==(const DockerCleanupScope&) const = default;
};
QV_JSON_FIELDS(DockerCleanupScope, context, endpoint, engineID)

/// One object to be removed.
struct DockerCleanupTarget {
  std::string commandTarget;    ///< what the client is told: a full identifier, or the name of a volume
  std::string displayName;      ///< for people
  std::string historyLocation;  ///< "docker://volumes/NAME" and the like
  std::int64_t sizeBytes = 0;   ///< as it was reviewed

  bool operator==(const DockerCleanupTarget&) const = default;
};
QV_JSON_FIELDS(DockerCleanupTarget, commandTarget, displayName, historyLocation, sizeBytes)

/// Adds a size that a program printed: one below zero counts as none, and a sum beyond any number stays the largest.
void addSize(std::int64_t& sum, std::int64_t size);
/// What targets take together.
std::int64_t sumOf(std::span<const DockerCleanupTarget> targets);

/// A reviewed object with all that removing it later takes.
struct DockerRetryTarget {
  DockerResourceKind resource = DockerResourceKind::images;
  DockerCleanupScope scope;
  DockerCleanupTarget target;
  std::vector<std::string> reviewedTags = {};  ///< of an image: all names that it had in the review, sorted
  std::optional<std::string> createdAt = {};   ///< of a volume: when it was made, as the engine said in the review
  std::optional<std::string> startedAt = {};   ///< of a container: when it last began to run, likewise

  bool operator==(const DockerRetryTarget&) const = default;
};
QV_JSON_FIELDS(DockerRetryTarget, resource, scope, target, reviewedTags, createdAt, startedAt)

/// What one command removes at once.
enum class DockerBulkKind { volume, buildCache };
QV_CASE_NAMES(DockerBulkKind, volume, buildCache)

/// A removal of many objects by one command, which chooses them itself.
struct DockerCleanupOperation {
  DockerBulkKind kind = DockerBulkKind::buildCache;
  DockerCleanupScope scope;
  std::vector<DockerCleanupTarget> reviewedTargets;  ///< what a person saw of it

  bool operator==(const DockerCleanupOperation&) const = default;
};
QV_JSON_FIELDS(DockerCleanupOperation, kind, scope, reviewedTargets)

}  // namespace quorvane
