#include "quorvane/developer/ContainerCounts.h"

#include "quorvane/developer/DockerCommands.h"
#include "quorvane/developer/DockerNames.h"

#include <algorithm>
#include <span>
#include <vector>

namespace quorvane {

namespace {

constexpr std::size_t mostAtOnce = 500;

using Identifiers = std::span<const std::string>;

bool count(const DockerEngine& engine, Identifiers containers, ContainerCounts& counts) {
  const CommandResult answer = engine.ask(DockerCommands::imagesOf(containers));
  const auto images = dockerTexts(answer.output);
  if (answer.hasSucceeded() && images.isComplete() && images.records.size() == containers.size()) {
    for (const std::string& image : images.records) ++counts[image];
    return std::ranges::all_of(images.records, isFullImageID);
  }
  if (containers.size() == 1) return false;
  const std::size_t half = containers.size() / 2;
  return count(engine, containers.first(half), counts) && count(engine, containers.subspan(half), counts);
}

}  // namespace

std::optional<ContainerCounts> containersByImage(const DockerEngine& engine,
                                                 const DockerListing<DockerContainerRecord>& containers) {
  if (!containers.isComplete()) return std::nullopt;
  std::vector<std::string> identifiers;
  identifiers.reserve(containers.records.size());
  for (const DockerContainerRecord& each : containers.records) identifiers.push_back(each.id);
  ContainerCounts counts;
  for (Identifiers left = identifiers; !left.empty(); left = left.subspan(std::min(left.size(), mostAtOnce)))
    if (!count(engine, left.first(std::min(left.size(), mostAtOnce)), counts)) return std::nullopt;
  return counts;
}

}  // namespace quorvane
