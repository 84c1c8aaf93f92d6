#pragma once

#include "quorvane/developer/DockerEngine.h"
#include "quorvane/developer/DockerListing.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace quorvane {

/// How many containers were made from each image, by the image's full identifier.
using ContainerCounts = std::map<std::string, std::int64_t, std::less<>>;

/// Asks the engine from which image each of the containers was made: many at once, and in halves where one of them is
/// gone meanwhile. Nothing when a single one is not certain, as when a line of the listing did not decode.
std::optional<ContainerCounts> containersByImage(const DockerEngine& engine,
                                                 const DockerListing<DockerContainerRecord>& containers);

}  // namespace quorvane
