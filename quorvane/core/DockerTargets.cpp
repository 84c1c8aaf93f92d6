#include "quorvane/core/DockerTargets.h"

#include <utility>

namespace quorvane {

std::string titleKey(DockerResourceKind kind) {
  switch (kind) {
    case DockerResourceKind::images: return "docker.resource.images";
    case DockerResourceKind::containers: return "docker.resource.containers";
    case DockerResourceKind::volumes: return "docker.resource.volumes";
    case DockerResourceKind::buildCache: return "docker.resource.buildCache";
  }
  std::unreachable();
}

std::string detailKey(DockerResourceKind kind) { return titleKey(kind) + ".detail"; }

}  // namespace quorvane
