#pragma once

#include "quorvane/core/DockerTargets.h"

#include <span>
#include <string>
#include <vector>

namespace quorvane {

/// The argument lists that the client is given, and no others. None of them forces a removal.
namespace DockerCommands {

using Arguments = std::vector<std::string>;

Arguments showContext();
/// What a client is asked that does not know `showContext`.
Arguments listContexts();
Arguments endpointOf(const std::string& context);
Arguments engineID();

Arguments usageSummary();
Arguments usageTables();
Arguments images();
Arguments containers();
Arguments volumes();

using Names = std::span<const std::string>;

// These print a line for each object, as `DockerOrigins.h` has it. One that is gone has none, and the run fails.
Arguments containerOrigins(Names containerIDs);
Arguments volumeOrigins(Names volumes);
Arguments imageOrigins(Names imageIDs);

// Of containers and images:
Arguments identityOf(DockerResourceKind kind, const std::string& id);
Arguments identities(DockerResourceKind kind);
Arguments stateOf(const std::string& containerID);
Arguments tagsOf(const std::string& imageID);
Arguments containersOf(const std::string& imageID);

/// Removes one image, container or volume. Of an image nothing but itself: its parents without a name stay.
Arguments removalOf(DockerResourceKind kind, const std::string& target);
/// Lets the engine remove the build cache that nothing uses; "--force" stands for its own question.
Arguments pruneBuildCache();

}  // namespace DockerCommands

}  // namespace quorvane
