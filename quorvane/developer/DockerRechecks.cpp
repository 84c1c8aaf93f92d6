#include "quorvane/developer/DockerRechecks.h"

#include "quorvane/base/Json.h"
#include "quorvane/developer/DockerCommands.h"
#include "quorvane/developer/DockerContexts.h"
#include "quorvane/developer/DockerListing.h"
#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerOrigins.h"
#include "quorvane/developer/DockerSafetyPolicy.h"
#include "quorvane/developer/DockerService.h"

#include <algorithm>
#include <span>
#include <utility>

namespace quorvane {

namespace {

using Category = CleanupFailureCategory;
using Refusal = std::optional<DockerRefusal>;

DockerRefusal notAsReviewed() { return {"docker.failure.changed", Category::changedAfterScan}; }

DockerRefusal unanswered(const CommandResult& result) {
  return {"docker.failure.unanswered", Category::other, commandFailed(result).message};
}

// A client that ended by itself said no; one that did not said nothing.
DockerRefusal notFound(const CommandResult& result) {
  if (result.exitCode < 0) return unanswered(result);
  return {"docker.failure.unknownObject", Category::missing, commandFailed(result).message};
}

Refusal otherIdentity(const DockerEngine& engine, const DockerRetryTarget& target) {
  const std::string& id = target.target.commandTarget;
  const CommandResult answer = engine.ask(DockerCommands::identityOf(target.resource, id));
  if (!answer.hasSucceeded()) return notFound(answer);
  return onlyText(answer.output) == id ? std::nullopt : Refusal(notAsReviewed());
}

Refusal notAtRest(const DockerEngine& engine, const std::string& containerID) {
  const CommandResult answer = engine.ask(DockerCommands::stateOf(containerID));
  if (!answer.hasSucceeded()) return notFound(answer);
  if (DockerSafetyPolicy::isRemovableState(onlyText(answer.output).value_or(""))) return std::nullopt;
  return DockerRefusal{"docker.failure.containerState", Category::inUse};
}

// The listing has a container's names with commas between: its own, and those that others link to it by.
bool isNamed(std::string_view names, std::string_view name) {
  return !name.empty() && ("," + std::string(names) + ",").contains("," + std::string(name) + ",");
}

/// Of one that goes by another name now, or ran since the review.
Refusal otherContainer(const DockerEngine& engine, const DockerRetryTarget& reviewed) {
  const std::string& id = reviewed.target.commandTarget;
  const auto origins = containerOrigins(engine, std::span(&id, 1));
  const auto now = origins.find(id);
  if (now == origins.end() || !reviewed.startedAt) return notAsReviewed();
  const std::string& name = now->second.name;
  if (!name.starts_with('/') || !isNamed(reviewed.target.displayName, std::string_view(name).substr(1)))
    return DockerRefusal{"docker.failure.renamed", Category::changedAfterScan};
  if (now->second.startedAt == reviewed.startedAt) return std::nullopt;
  return DockerRefusal{"docker.failure.ranAgain", Category::changedAfterScan};
}

Refusal imageInUse(const DockerEngine& engine, const std::string& imageID) {
  const CommandResult answer = engine.ask(DockerCommands::containersOf(imageID));
  if (!answer.hasSucceeded()) return unanswered(answer);
  if (trimmed(answer.output).empty()) return std::nullopt;
  return DockerRefusal{"docker.failure.imageInUse", Category::inUse};
}

// An image without names has null there, or an empty list.
std::optional<std::vector<std::string>> tagsIn(std::string_view output) {
  const auto json = parsedJson(output);
  if (!json) return std::nullopt;
  if (json->is_null()) return std::vector<std::string>();
  auto tags = fromJson<std::vector<std::string>>(*json);
  if (!tags) return std::nullopt;
  std::ranges::sort(*tags);
  return *std::move(tags);
}

Refusal otherTags(const DockerEngine& engine, const DockerRetryTarget& target) {
  const CommandResult answer = engine.ask(DockerCommands::tagsOf(target.target.commandTarget));
  if (!answer.hasSucceeded()) return notFound(answer);
  if (tagsIn(answer.output) == target.reviewedTags) return std::nullopt;
  return DockerRefusal{"docker.failure.tagsChanged", Category::changedAfterScan};
}

/// Of one that is protected now, or was written to since the review.
Refusal unlikeVolume(const DockerEngine& engine, const DockerRetryTarget& reviewed) {
  const std::string& name = reviewed.target.commandTarget;
  const auto volumes = volumesOf(engine);
  if (!volumes) return DockerRefusal{"docker.failure.unansweredPlainly"};
  const auto count = std::ranges::count(*volumes, name, &DockerVolumeRecord::name);
  if (count == 0) return DockerRefusal{"docker.failure.unknownObject", Category::missing};
  if (count > 1) return notAsReviewed();
  const auto volume = std::ranges::find(*volumes, name, &DockerVolumeRecord::name);
  if (DockerSafetyPolicy::safetyOf(*volume) == DockerCleanupSafety::protected_)
    return DockerRefusal{"docker.failure.volumeProtected", Category::protected_};
  return volume->sizeBytes.value_or(0) == reviewed.target.sizeBytes ? std::nullopt : Refusal(notAsReviewed());
}

// Another volume of the same name tells itself apart by nothing else.
std::optional<std::string> creationOf(const DockerEngine& engine, const std::string& volume) {
  const auto origins = volumeOrigins(engine, std::span(&volume, 1));
  const auto now = origins.find(volume);
  if (now == origins.end() || now->second.createdAt.empty()) return std::nullopt;
  return now->second.createdAt;
}

Refusal otherVolume(const DockerEngine& engine, const DockerRetryTarget& reviewed) {
  const auto createdAt = creationOf(engine, reviewed.target.commandTarget);
  return createdAt && createdAt == reviewed.createdAt ? std::nullopt : Refusal(notAsReviewed());
}

Refusal unsafeNow(const DockerEngine& engine, const DockerRetryTarget& target) {
  const std::string& name = target.target.commandTarget;
  switch (target.resource) {
    case DockerResourceKind::images: {
      if (auto refusal = otherIdentity(engine, target)) return refusal;
      if (auto refusal = imageInUse(engine, name)) return refusal;
      return otherTags(engine, target);
    }
    case DockerResourceKind::containers: {
      if (auto refusal = otherIdentity(engine, target)) return refusal;
      if (auto refusal = notAtRest(engine, name)) return refusal;
      return otherContainer(engine, target);
    }
    case DockerResourceKind::volumes: {
      if (auto refusal = unlikeVolume(engine, target)) return refusal;
      return otherVolume(engine, target);
    }
    case DockerResourceKind::buildCache: break;
  }
  return DockerRefusal{"docker.failure.invalidName"};
}

/// What a build uses is free to be pruned as soon as that ends, which may be in the moment before the command.
Refusal unreviewedCache(const std::vector<DockerBuildCacheRecord>& present, const DockerCleanupOperation& prune) {
  const auto isUnreviewed = [&](const DockerBuildCacheRecord& cache) {
    return !cache.isShared &&
           std::ranges::count(prune.reviewedTargets, cache.id, &DockerCleanupTarget::commandTarget) == 0;
  };
  const auto other = std::ranges::find_if(present, isUnreviewed);
  if (other == present.end()) return std::nullopt;
  if (other->isInUse == true) return DockerRefusal{"docker.failure.cacheInUse", Category::inUse};
  return DockerRefusal{"docker.failure.cacheChanged", Category::changedAfterScan};
}

DockerPresence presenceOfVolume(const DockerEngine& engine, const DockerRetryTarget& reviewed) {
  const std::string& name = reviewed.target.commandTarget;
  const auto volumes = listedVolumes(engine);
  if (!volumes) return DockerPresence::unknown;
  if (std::ranges::count(*volumes, name, &DockerVolumeRecord::name) == 0) return DockerPresence::absent;
  const auto createdAt = creationOf(engine, name);
  if (!createdAt || !reviewed.createdAt) return DockerPresence::unknown;
  return *createdAt == *reviewed.createdAt ? DockerPresence::present : DockerPresence::absent;
}

}  // namespace

std::string messageKey(DockerPresence presence) { return "cleanup.command." + std::string(caseName(presence)); }

Refusal refusalOfEngine(const DockerEngine& engine, const DockerCleanupScope& scope) {
  const auto identifier = engine.identifier();
  if (!identifier) return DockerRefusal{"docker.failure.engineSilent"};
  if (*identifier == scope.engineID) return std::nullopt;
  return DockerRefusal{"docker.failure.engineChanged", Category::changedAfterScan};
}

Refusal refusalNow(const DockerEngine& engine, const DockerRetryTarget& target) {
  if (!isCommandTarget(target.resource, target.target.commandTarget))
    return DockerRefusal{"docker.failure.invalidName"};
  if (auto refusal = refusalOfEngine(engine, target.scope)) return refusal;
  return unsafeNow(engine, target);
}

Refusal refusalNow(const DockerEngine& engine, const DockerCleanupOperation& prune) {
  if (prune.kind != DockerBulkKind::buildCache) return DockerRefusal{"docker.failure.invalidName"};
  if (prune.reviewedTargets.empty()) return DockerRefusal{"docker.failure.nothingToPrune", Category::missing};
  if (auto refusal = refusalOfEngine(engine, prune.scope)) return refusal;
  const auto present = buildCachesOf(engine);
  if (!present) return DockerRefusal{"docker.failure.cacheChanged", Category::changedAfterScan};
  return unreviewedCache(*present, prune);
}

std::optional<std::vector<DockerCleanupTarget>> goneOf(const DockerEngine& engine,
                                                       const DockerCleanupOperation& prune) {
  const auto present = buildCachesOf(engine);
  if (!present) return std::nullopt;
  std::vector<DockerCleanupTarget> gone = prune.reviewedTargets;
  std::erase_if(gone, [&](const DockerCleanupTarget& each) {
    return std::ranges::count(*present, each.commandTarget, &DockerBuildCacheRecord::id) > 0;
  });
  return gone;
}

DockerPresence presenceOf(const DockerEngine& engine, const DockerRetryTarget& target) {
  const DockerResourceKind kind = target.resource;
  if (kind == DockerResourceKind::volumes) return presenceOfVolume(engine, target);
  const CommandResult answer = engine.ask(DockerCommands::identities(kind));
  const auto listed = dockerTexts(answer.output);
  const auto isFull = [kind](const std::string& id) { return isCommandTarget(kind, id); };
  if (!answer.hasSucceeded() || !listed.isComplete() || !std::ranges::all_of(listed.records, isFull))
    return DockerPresence::unknown;
  const bool isListed = std::ranges::count(listed.records, target.target.commandTarget) > 0;
  return isListed ? DockerPresence::present : DockerPresence::absent;
}

}  // namespace quorvane
