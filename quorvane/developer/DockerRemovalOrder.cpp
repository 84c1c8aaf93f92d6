#include "quorvane/developer/DockerRemovalOrder.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

namespace quorvane {

DockerRemovalOrder removalOrderOf(std::vector<std::string> images, const DockerOrigins<DockerImageOrigin>& origins) {
  std::map<std::string, std::int64_t> childCounts;
  for (const auto& [id, origin] : origins) ++childCounts[origin.parentID];
  const auto isChildless = [&](const std::string& id) { return childCounts[id] == 0; };
  DockerRemovalOrder order;
  while (std::ranges::any_of(images, isChildless)) {
    const auto begin = std::ssize(order.removable);
    std::ranges::copy_if(images, std::back_inserter(order.removable), isChildless);
    std::erase_if(images, isChildless);
    for (auto gone = order.removable.begin() + begin; gone != order.removable.end(); ++gone)
      if (const auto origin = origins.find(*gone); origin != origins.end()) --childCounts[origin->second.parentID];
  }
  order.builtUpon = std::move(images);
  return order;
}

}  // namespace quorvane
