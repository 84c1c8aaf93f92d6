#pragma once

#include "quorvane/developer/DockerOrigins.h"

#include <string>
#include <vector>

namespace quorvane {

/// How several images can go: an engine removes none that another image was built on.
struct DockerRemovalOrder {
  std::vector<std::string> removable;  ///< identifiers, each before that of the image that it was built on
  std::vector<std::string> builtUpon;  ///< stay: an image that stays was built on them

  bool operator==(const DockerRemovalOrder&) const = default;
};

/// The order for these identifiers, as far as the origins of the engine's images tell.
DockerRemovalOrder removalOrderOf(std::vector<std::string> images, const DockerOrigins<DockerImageOrigin>& origins);

}  // namespace quorvane
