#include "quorvane/app/cli/reports/DockerReasons.h"

#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerSafetyPolicy.h"

namespace quorvane {

Message dockerReason(const DockerImageRecord& image) {
  if (image.containerCount < 0) return {"docker.reason.containersUnknown", {}};
  if (image.containerCount > 0) return {"docker.reason.hasContainers", {{"count", image.containerCount}}};
  if (!isDangling(image)) return {"docker.reason.named", {}};
  if (!hasRepository(image)) return {"docker.image.dangling", {}};
  return {"docker.reason.untagged", {{"repository", image.repository}}};
}

Message dockerReason(const DockerContainerRecord& container) {
  const std::string state = DockerSafetyPolicy::stateKey(container.state);
  if (!container.composeProject) return {state, {}};
  return {"docker.reason.ofProject", {{"state", MessageKey{state}}, {"project", *container.composeProject}}};
}

Message dockerReason(const DockerVolumeRecord& volume) {
  if (!volume.referenceCount) return {"docker.reason.usersUnknown", {}};
  if (*volume.referenceCount > 0) return {"docker.reason.mounted", {{"count", *volume.referenceCount}}};
  if (isKept(volume.labels)) return {"docker.reason.kept", {}};
  return {isAnonymous(volume) ? "docker.reason.anonymous" : "docker.reason.unmounted", {}};
}

Message dockerReason(const DockerBuildCacheRecord& cache) {
  if (cache.isInUse == true) return {"docker.reason.cacheInUse", {}};
  if (cache.isShared) return {"docker.reason.cacheShared", {}};
  return {"docker.reason.cacheUnshared", {{"type", cache.type}}};
}

}  // namespace quorvane
