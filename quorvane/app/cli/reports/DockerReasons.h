#pragma once

#include "quorvane/base/Message.h"
#include "quorvane/developer/DockerResources.h"

// Why an object of an engine has its verdict, for people.

namespace quorvane {

Message dockerReason(const DockerImageRecord& image);
Message dockerReason(const DockerContainerRecord& container);
Message dockerReason(const DockerVolumeRecord& volume);
Message dockerReason(const DockerBuildCacheRecord& cache);

}  // namespace quorvane
