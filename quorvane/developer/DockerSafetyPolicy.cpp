#include "quorvane/developer/DockerSafetyPolicy.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/developer/DockerNames.h"

#include <algorithm>

namespace quorvane {

std::string titleKey(DockerCleanupSafety safety) { return "docker.safety." + std::string(caseName(safety)); }

namespace DockerSafetyPolicy {

DockerCleanupSafety safetyOf(const DockerImageRecord& image) {
  if (image.containerCount != 0) return DockerCleanupSafety::protected_;
  return isDangling(image) ? DockerCleanupSafety::safe : DockerCleanupSafety::review;
}

DockerCleanupSafety safetyOf(const DockerContainerRecord& container) {
  return isRemovableState(container.state) ? DockerCleanupSafety::review : DockerCleanupSafety::protected_;
}

DockerCleanupSafety safetyOf(const DockerVolumeRecord& volume) {
  if (volume.referenceCount != 0 || isKept(volume.labels)) return DockerCleanupSafety::protected_;
  return DockerCleanupSafety::review;
}

DockerCleanupSafety safetyOf(const DockerBuildCacheRecord& cache) {
  return cache.isShared || cache.isInUse == true ? DockerCleanupSafety::protected_ : DockerCleanupSafety::safe;
}

bool isRemovableState(std::string_view state) {
  constexpr std::array removable{"exited", "created", "dead"};
  return std::ranges::find(removable, asciiLowered(state)) != removable.end();
}

std::string stateKey(std::string_view state) {
  constexpr std::array known{"running", "paused", "restarting", "exited", "created", "dead"};
  const std::string lowered = asciiLowered(state);
  const bool isKnown = std::ranges::find(known, lowered) != known.end();
  return "docker.container.state." + (isKnown ? lowered : "other");
}

}  // namespace DockerSafetyPolicy

}  // namespace quorvane
