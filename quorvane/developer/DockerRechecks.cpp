#include "quorvane/developer/DockerRechecks.h"

#include "quorvane/base/Json.h"
#include "quorvane/developer/DockerCommands.h"
#include "quorvane/developer/DockerContexts.h"
#include "quorvane/developer/DockerListing.h"
#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerSafetyPolicy.h"
#include "quorvane/developer/DockerService.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace quorvane {

namespace {

using Category = CleanupFailureCategory;
using Refusal = std::optional<DockerRefusal>;

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
  if (onlyText(answer.output) == id) return std::nullopt;
  return DockerRefusal{"docker.failure.changed", Category::changedAfterScan};
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

Refusal otherName(const DockerEngine& engine, const DockerCleanupTarget& container) {
  const CommandResult answer = engine.ask(DockerCommands::nameOf(container.commandTarget));
  if (!answer.hasSucceeded()) return notFound(answer);
  const std::string name = onlyText(answer.output).value_or("");
  if (name.starts_with('/') && isNamed(container.displayName, std::string_view(name).substr(1))) return std::nullopt;
  return DockerRefusal{"docker.failure.renamed", Category::changedAfterScan};
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

Refusal protectedVolume(const DockerEngine& engine, const std::string& name) {
  const auto volumes = volumesOf(engine);
  if (!volumes) return DockerRefusal{"docker.failure.unanswered"};
  const auto volume = std::ranges::find(*volumes, name, &DockerVolumeRecord::name);
  if (volume == volumes->end()) return DockerRefusal{"docker.failure.unknownObject", Category::missing};
  if (DockerSafetyPolicy::safetyOf(*volume) != DockerCleanupSafety::protected_) return std::nullopt;
  return DockerRefusal{"docker.failure.volumeProtected", Category::protected_};
}

/// "2026-11-21T05:04:03", then perhaps a fraction, then "Z" or an offset; in whole seconds.
std::optional<Date> momentOf(std::string_view text) {
  constexpr std::size_t length = 19;
  const auto local = dateFromIsoText(std::string(text.substr(0, length)) + "Z");
  if (!local) return std::nullopt;
  text.remove_prefix(length);
  if (text.starts_with('.')) text.remove_prefix(std::min(text.find_first_not_of("0123456789", 1), text.size()));
  if (text == "Z") return local;
  if (text.size() != 6 || (text[0] != '+' && text[0] != '-') || text[3] != ':') return std::nullopt;
  const auto hours = dockerCount(text.substr(1, 2)), minutes = dockerCount(text.substr(4, 2));
  if (!hours || !minutes) return std::nullopt;
  const auto offset = std::chrono::hours(*hours) + std::chrono::minutes(*minutes);
  return text[0] == '+' ? *local - offset : *local + offset;
}

Refusal newerVolume(const DockerEngine& engine, const DockerRetryTarget& volume) {
  const CommandResult answer = engine.ask(DockerCommands::creationOf(volume.target.commandTarget));
  if (!answer.hasSucceeded()) return notFound(answer);
  const auto created = momentOf(onlyText(answer.output).value_or(""));
  const auto reviewed =
      volume.reviewedTags.size() == 1 ? dateFromIsoText(volume.reviewedTags.front()) : std::optional<Date>();
  if (created && reviewed && *created <= *reviewed) return std::nullopt;
  return DockerRefusal{"docker.failure.changed", Category::changedAfterScan};
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
      return otherName(engine, target.target);
    }
    case DockerResourceKind::volumes: {
      if (auto refusal = protectedVolume(engine, name)) return refusal;
      return newerVolume(engine, target);
    }
    case DockerResourceKind::buildCache: break;
  }
  return DockerRefusal{"docker.failure.invalidName"};
}

DockerPresence presenceAmong(const std::vector<std::string>& listed, const std::string& target) {
  return std::ranges::find(listed, target) == listed.end() ? DockerPresence::absent : DockerPresence::present;
}

DockerPresence presenceOfVolume(const DockerEngine& engine, const std::string& name) {
  const CommandResult answer = engine.ask(DockerCommands::volumes());
  const auto volumes = dockerVolumes(answer.output);
  if (!answer.hasSucceeded() || !volumes.isComplete()) return DockerPresence::unknown;
  std::vector<std::string> names;
  names.reserve(volumes.records.size());
  for (const DockerVolumeRecord& volume : volumes.records) names.push_back(volume.name);
  return presenceAmong(names, name);
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
  if (auto refusal = refusalOfEngine(engine, prune.scope)) return refusal;
  const auto present = buildCachesOf(engine);
  const auto isReviewed = [&](const DockerBuildCacheRecord& cache) {
    return DockerSafetyPolicy::safetyOf(cache) == DockerCleanupSafety::protected_ ||
           std::ranges::count(prune.reviewedTargets, cache.id, &DockerCleanupTarget::commandTarget) > 0;
  };
  if (present && std::ranges::all_of(*present, isReviewed)) return std::nullopt;
  return DockerRefusal{"docker.failure.cacheChanged", Category::changedAfterScan};
}

DockerPresence presenceOf(const DockerEngine& engine, DockerResourceKind kind, const std::string& target) {
  if (kind == DockerResourceKind::volumes) return presenceOfVolume(engine, target);
  const CommandResult answer = engine.ask(DockerCommands::identities(kind));
  const auto listed = dockerTexts(answer.output);
  const auto isFull = [kind](const std::string& id) { return isCommandTarget(kind, id); };
  if (!answer.hasSucceeded() || !listed.isComplete() || !std::ranges::all_of(listed.records, isFull))
    return DockerPresence::unknown;
  return presenceAmong(listed.records, target);
}

}  // namespace quorvane
