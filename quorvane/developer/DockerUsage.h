#pragma once

#include "quorvane/developer/DockerListing.h"
#include "quorvane/developer/DockerSnapshot.h"

#include <vector>

namespace quorvane {

/// One usage of each kind: as the summary says; where it says nothing of a kind, what its records come to. Reclaimable
/// is what the records come to that are not protected, at most all that the kind takes: images share parts, so less may
/// come free.
std::vector<DockerResourceUsage> usagesOf(const DockerSnapshot& snapshot, const std::vector<DockerUsageLine>& summary);

}  // namespace quorvane
