#include "quorvane/developer/DockerRemovalOrder.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

namespace quorvane {

DockerRemovalOrder removalOrderOf(std::vector<std::string> images, const DockerOrigins<DockerImageOrigin>& origins) {
  std::map<std::string_view, std::int64_t> childCounts;
  for (const auto& [id, origin] : origins) ++childCounts[origin.parentID];
  DockerRemovalOrder order;
  while (true) {
    const auto others =
        std::ranges::stable_partition(images, [&](const std::string& id) { return childCounts[id] == 0; }).begin();
    if (others == images.begin()) break;
    for (const std::string& childless : std::span(images.begin(), others)) {
      const auto origin = origins.find(childless);
      if (origin != origins.end()) --childCounts[origin->second.parentID];
      order.removable.push_back(childless);
    }
    images.erase(images.begin(), others);
  }
  order.builtUpon = std::move(images);
  return order;
}

}  // namespace quorvane
