#include "quorvane/base/Assert.h"
#include "quorvane/developer/DockerContexts.h"
#include "quorvane/developer/DockerListing.h"
#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerPruneAnswer.h"
#include "quorvane/developer/DockerSizeText.h"
#include "quorvane/developer/DockerSnapshot.h"
#include "quorvane/developer/DockerUsageTables.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

using namespace quorvane;

template <class Record>
void checkEachLineCounts(const DockerListing<Record>& listing, std::string_view output) {
  require(listing.records.size() + static_cast<std::size_t>(listing.undecodedCount) == linesOf(output).size(),
          "a line was lost");
}

void checkImages(std::string_view output) {
  const auto images = dockerImages(output);
  checkEachLineCounts(images, output);
  for (const DockerImageRecord& image : images.records)
    require(isFullImageID(image.id) && image.sizeBytes >= 0, "an image without a full identifier");
}

void checkContainers(std::string_view output) {
  const auto containers = dockerContainers(output);
  checkEachLineCounts(containers, output);
  for (const DockerContainerRecord& container : containers.records)
    require(isFullContainerID(container.id), "a container without a full identifier");
}

void checkTables(std::string_view output) {
  const DockerUsageTables tables = dockerUsageTables(output);
  require(tables.hasVolumes || tables.volumes.empty(), "rows of no table");
  require(tables.hasBuildCache || tables.buildCaches == DockerListing<DockerBuildCacheRecord>(), "rows of no table");
}

void checkPruned(std::string_view output) {
  const auto pruned = prunedBuildCache(output);
  require(!pruned || pruned->size() < linesOf(output).size(), "more than was printed");
  for (const std::string& each : pruned.value_or(std::vector<std::string>()))
    require(!each.empty() && std::ranges::all_of(each, isLetterOrDigit), "an identifier that is none");
}

void checkContexts(std::string_view output) {
  for (const auto& name : {shownContext(output), currentContext(output)})
    require(!name || (!name->empty() && name->front() != '-'), "a context that is an option");
  if (const auto text = onlyText(output); text && isEndpoint(*text))
    require(text->front() != '-' && !text->contains('\0'), "an address that is an option");
}

void checkSnapshot(std::string_view text) {
  const auto snapshot = dockerSnapshotFromJson(text);
  if (!snapshot) return;
  const auto again = dockerSnapshotFromJson(jsonText({*snapshot, {}}));
  require(again && *again == *snapshot, "a snapshot that does not come back");
}

}  // namespace

// The first byte chooses the parser, the rest is what the client printed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view output(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0] % 9) {
    case 0:
      require(dockerSize(output).value_or(0) >= 0 && dockerContainerSize(output).value_or(0) >= 0, "less than nothing");
      break;
    case 1: checkImages(output); break;
    case 2: checkContainers(output); break;
    case 3: checkEachLineCounts(dockerVolumes(output), output); break;
    case 4: checkEachLineCounts(dockerUsageLines(output), output); break;
    case 5: checkTables(output); break;
    case 6: checkContexts(output); break;
    case 7: checkSnapshot(output); break;
    case 8: checkPruned(output); break;
  }
  return 0;
}
