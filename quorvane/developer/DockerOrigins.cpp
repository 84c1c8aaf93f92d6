#include "quorvane/developer/DockerOrigins.h"

#include "quorvane/base/Json.h"
#include "quorvane/developer/DockerCommands.h"
#include "quorvane/developer/DockerListing.h"
#include "quorvane/developer/DockerNames.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace quorvane {

namespace {

using Names = std::span<const std::string>;

constexpr std::size_t mostAtOnce = 500;

template <class Origin>
DockerOrigins<Origin> asked(const DockerEngine& engine, Names names, DockerCommands::Arguments (*command)(Names),
                            std::string Origin::*name) {
  DockerOrigins<Origin> origins;
  for (; !names.empty(); names = names.subspan(std::min(names.size(), mostAtOnce))) {
    const CommandResult answer = engine.ask(command(names.first(std::min(names.size(), mostAtOnce))));
    for (const std::string_view line : linesOf(answer.output))
      if (auto origin = recordFromText<Origin>(line)) origins.insert_or_assign((*origin).*name, *origin);
  }
  return origins;
}

}  // namespace

DockerOrigins<DockerContainerOrigin> containerOrigins(const DockerEngine& engine, Names ids) {
  return asked(engine, ids, DockerCommands::containerOrigins, &DockerContainerOrigin::id);
}

DockerOrigins<DockerVolumeOrigin> volumeOrigins(const DockerEngine& engine, Names names) {
  std::vector<std::string> possible;
  std::ranges::copy_if(names, std::back_inserter(possible), isVolumeName);
  return asked(engine, possible, DockerCommands::volumeOrigins, &DockerVolumeOrigin::name);
}

DockerOrigins<DockerImageOrigin> imageOrigins(const DockerEngine& engine, Names ids) {
  return asked(engine, ids, DockerCommands::imageOrigins, &DockerImageOrigin::id);
}

}  // namespace quorvane
