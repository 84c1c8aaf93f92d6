#pragma once

#include "quorvane/base/JsonRecord.h"
#include "quorvane/developer/DockerEngine.h"

#include <map>
#include <span>
#include <string>

// What tells an object from another one that looks like it, and what it was made from: no listing has it, so the engine
// is asked about many objects at once. Whatever is not there, or said in another form, is left out.

namespace quorvane {

struct DockerContainerOrigin {
  std::string id;
  std::string name;  ///< with "/" before it
  std::string imageID;
  std::string startedAt;

  bool operator==(const DockerContainerOrigin&) const = default;
};
QV_JSON_FIELDS(DockerContainerOrigin, id, name, imageID, startedAt)

struct DockerVolumeOrigin {
  std::string name;
  std::string createdAt;  ///< empty where the driver tells nothing

  bool operator==(const DockerVolumeOrigin&) const = default;
};
QV_JSON_FIELDS(DockerVolumeOrigin, name, createdAt)

struct DockerImageOrigin {
  std::string id;
  std::string parentID;  ///< of the image that it was built on, as far as the engine keeps that; empty for none

  bool operator==(const DockerImageOrigin&) const = default;
};
QV_JSON_FIELDS(DockerImageOrigin, id, parentID)

/// By identifier, or by name.
template <class Origin>
using DockerOrigins = std::map<std::string, Origin, std::less<>>;

DockerOrigins<DockerContainerOrigin> containerOrigins(const DockerEngine& engine, std::span<const std::string> ids);
/// A name that no volume can have is not asked for.
DockerOrigins<DockerVolumeOrigin> volumeOrigins(const DockerEngine& engine, std::span<const std::string> names);
DockerOrigins<DockerImageOrigin> imageOrigins(const DockerEngine& engine, std::span<const std::string> ids);

}  // namespace quorvane
