#include "quorvane/core/DockerTargets.h"

#include <algorithm>
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

void addSize(std::int64_t& sum, std::int64_t size) {
  sum += std::min(std::max<std::int64_t>(0, size), INT64_MAX - sum);
}

std::int64_t sumOf(std::span<const DockerCleanupTarget> targets) {
  std::int64_t sum = 0;
  for (const DockerCleanupTarget& target : targets) addSize(sum, target.sizeBytes);
  return sum;
}

std::string detailKey(DockerResourceKind kind) { return titleKey(kind) + ".detail"; }

}  // namespace quorvane
