#include "quorvane/developer/DockerSelection.h"

#include "quorvane/base/Assert.h"
#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerRemovalOrder.h"
#include "quorvane/developer/DockerSafetyPolicy.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

using Category = CleanupFailureCategory;

std::optional<DockerResourceKind> kindOf(std::string_view word) {
  if (word == "image") return DockerResourceKind::images;
  if (word == "container") return DockerResourceKind::containers;
  if (word == "volume") return DockerResourceKind::volumes;
  return std::nullopt;
}

/// An object of a snapshot as a target, and its verdict.
struct Candidate {
  DockerRetryTarget target;
  DockerCleanupSafety safety = DockerCleanupSafety::protected_;
};

Candidate candidateOf(DockerCleanupTarget target, DockerCleanupSafety safety) {
  Candidate candidate;
  candidate.target.target = std::move(target);
  candidate.safety = safety;
  return candidate;
}

/// All names of an image are one candidate; it is as safe as the least safe of them.
std::optional<Candidate> imageIn(const DockerSnapshot& snapshot, const std::string& id) {
  std::optional<Candidate> found;
  for (const DockerImageRecord& image : snapshot.images) {
    if (image.id != id) continue;
    const DockerCleanupSafety safety = DockerSafetyPolicy::safetyOf(image);
    const std::string name = displayNameOf(image);
    if (!found) {
      found = candidateOf({id, name, {}, image.sizeBytes}, safety);
    } else {
      found->target.target.displayName += ", " + name;
      found->safety = std::max(found->safety, safety);
    }
    if (!isDangling(image)) found->target.reviewedTags.push_back(name);
  }
  if (found) std::ranges::sort(found->target.reviewedTags);
  return found;
}

std::optional<Candidate> containerIn(const DockerSnapshot& snapshot, const std::string& id) {
  const auto found = std::ranges::find(snapshot.containers, id, &DockerContainerRecord::id);
  if (found == snapshot.containers.end()) return std::nullopt;
  auto candidate =
      candidateOf({id, found->name, {}, found->sizeBytes.value_or(0)}, DockerSafetyPolicy::safetyOf(*found));
  candidate.target.startedAt = found->startedAt;
  return candidate;
}

/// Of two volumes of one name nothing tells which is meant.
std::optional<Candidate> volumeIn(const DockerSnapshot& snapshot, const std::string& name) {
  const auto found = std::ranges::find(snapshot.volumes, name, &DockerVolumeRecord::name);
  if (found == snapshot.volumes.end()) return std::nullopt;
  const bool isOnlyOne = std::ranges::count(snapshot.volumes, name, &DockerVolumeRecord::name) == 1;
  auto candidate = candidateOf({name, name, {}, found->sizeBytes.value_or(0)},
                               isOnlyOne ? DockerSafetyPolicy::safetyOf(*found) : DockerCleanupSafety::protected_);
  candidate.target.createdAt = found->createdAt;
  return candidate;
}

std::optional<Candidate> candidateIn(const DockerSnapshot& snapshot, const DockerSelector& selector) {
  switch (selector.resource) {
    case DockerResourceKind::images: return imageIn(snapshot, selector.id);
    case DockerResourceKind::containers: return containerIn(snapshot, selector.id);
    case DockerResourceKind::volumes: return volumeIn(snapshot, selector.id);
    case DockerResourceKind::buildCache: break;
  }
  abortOnBrokenInvariant("nothing names a part of the build cache", std::source_location::current());
}

class Reviewer {
 public:
  Reviewer(const DockerSnapshot& reviewed, const DockerSnapshot& now)
      : reviewed_(reviewed), now_(now), isOtherEngine_(scopeOf(reviewed).engineID != scopeOf(now).engineID) {}

  /// Whether the review holds it, or the engine does not either.
  bool take(const DockerSelector& selector) {
    const auto seen = candidateIn(reviewed_, selector);
    const auto present = candidateIn(now_, selector);
    if (!seen && present) return false;
    if (!isCommandTarget(selector.resource, selector.id)) {
      refuse(selector, {"docker.failure.invalidName"});
    } else if (isOtherEngine_) {
      refuse(selector, {"docker.failure.engineChanged", Category::changedAfterScan});
    } else if (!seen || !present) {
      refuse(selector, {"docker.failure.unknownObject", Category::missing});
    } else if (present->safety == DockerCleanupSafety::protected_) {
      refuse(selector, {"docker.failure.protected", Category::protected_});
    } else if (seen->safety == DockerCleanupSafety::protected_) {
      refuse(selector, {"docker.failure.changed", Category::changedAfterScan});
    } else if (selector.resource == DockerResourceKind::containers &&
               seen->target.target.displayName != present->target.target.displayName) {
      refuse(selector, {"docker.failure.renamed", Category::changedAfterScan});
    } else {
      plan(selector, *seen);
    }
    return true;
  }

  void takeSafe(const DockerOrigins<DockerImageOrigin>& origins) {
    std::vector<std::string> safe;
    for (const DockerImageRecord& image : reviewed_.images) {
      const DockerSelector selector{DockerResourceKind::images, image.id};
      const bool isNew = std::ranges::find(safe, image.id) == safe.end();
      if (isNew && isSafeIn(reviewed_, selector) && isSafeIn(now_, selector)) safe.push_back(image.id);
    }
    const DockerRemovalOrder order = removalOrderOf(std::move(safe), origins);
    for (const std::string& id : order.removable) take({DockerResourceKind::images, id});
    review_.builtUponCount = std::ssize(order.builtUpon);
  }

  void prune() {
    if (isOtherEngine_)
      return review_.plan.refused.push_back({std::string(pruneTarget),
                                             DockerResourceKind::buildCache,
                                             {"docker.failure.engineChanged", Category::changedAfterScan}});
    DockerCleanupOperation operation{DockerBulkKind::buildCache, scopeOf(reviewed_), {}};
    for (const DockerBuildCacheRecord& cache : reviewed_.buildCaches)
      if (DockerSafetyPolicy::safetyOf(cache) != DockerCleanupSafety::protected_)
        operation.reviewedTargets.push_back({cache.id, cache.type, std::string(buildCacheLocation), cache.sizeBytes});
    review_.hasNothingToPrune = operation.reviewedTargets.empty();
    if (!review_.hasNothingToPrune) review_.plan.prune = std::move(operation);
  }

  DockerReview take() { return std::move(review_); }

 private:
  static const DockerCleanupScope& scopeOf(const DockerSnapshot& snapshot) {
    if (!snapshot.cleanupScope)
      abortOnBrokenInvariant("only an engine that is pinned is cleaned", std::source_location::current());
    return *snapshot.cleanupScope;
  }

  static bool isSafeIn(const DockerSnapshot& snapshot, const DockerSelector& selector) {
    const auto candidate = candidateIn(snapshot, selector);
    return candidate && candidate->safety == DockerCleanupSafety::safe;
  }

  void refuse(const DockerSelector& selector, DockerRefusal refusal) {
    const auto isSame = [&](const DockerCleanupFailure& each) {
      return each.target == selector.id && each.resource == selector.resource;
    };
    std::vector<DockerCleanupFailure>& refused = review_.plan.refused;
    if (std::ranges::none_of(refused, isSame)) refused.push_back({selector.id, selector.resource, std::move(refusal)});
  }

  void plan(const DockerSelector& selector, const Candidate& seen) {
    const auto isSame = [&](const DockerRetryTarget& each) {
      return each.target.commandTarget == selector.id && each.resource == selector.resource;
    };
    if (std::ranges::any_of(review_.plan.targets, isSame)) return;
    DockerRetryTarget target = seen.target;
    target.resource = selector.resource;
    target.scope = scopeOf(reviewed_);
    target.target.historyLocation = historyLocation(selector.resource, selector.id);
    target.target.sizeBytes = std::max<std::int64_t>(0, target.target.sizeBytes);
    review_.plan.targets.push_back(std::move(target));
  }

  const DockerSnapshot& reviewed_;
  const DockerSnapshot& now_;
  const bool isOtherEngine_;
  DockerReview review_;
};

}  // namespace

std::optional<DockerSelector> dockerSelectorFrom(std::string_view text) {
  const std::size_t colon = std::min(text.find(':'), text.size());
  const auto kind = kindOf(text.substr(0, colon));
  if (!kind || colon + 1 >= text.size()) return std::nullopt;
  const std::string_view id = text.substr(colon + 1);
  if (*kind != DockerResourceKind::volumes && !isCommandTarget(*kind, id)) return std::nullopt;
  return DockerSelector{*kind, std::string(id)};
}

Outcome<DockerReview, DockerSelector> reviewOf(const DockerSelection& selection, const DockerSnapshot& reviewed,
                                               const DockerSnapshot& now,
                                               const DockerOrigins<DockerImageOrigin>& origins) {
  Reviewer reviewer(reviewed, now);
  for (const DockerSelector& selector : selection.named)
    if (!reviewer.take(selector)) return failure(selector);
  if (selection.takesSafe) reviewer.takeSafe(origins);
  if (selection.prunesBuildCache) reviewer.prune();
  return reviewer.take();
}

}  // namespace quorvane
