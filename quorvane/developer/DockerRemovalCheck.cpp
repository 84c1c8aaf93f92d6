#include "quorvane/developer/DockerRemovalCheck.h"

#include "quorvane/developer/DockerContexts.h"
#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerRechecks.h"
#include "quorvane/developer/DockerService.h"

#include <algorithm>

namespace quorvane {

namespace {

IrreversibleFinding findingOf(DockerPresence presence) {
  switch (presence) {
    case DockerPresence::absent: return IrreversibleFinding::gone;
    case DockerPresence::present: return IrreversibleFinding::stillThere;
    case DockerPresence::unknown: return IrreversibleFinding::unknown;
  }
  std::unreachable();
}

IrreversibleFinding lookFor(const DockerEngine& engine, const DockerRetryTarget& target) {
  if (!isCommandTarget(target.resource, target.target.commandTarget)) return IrreversibleFinding::unknown;
  return findingOf(presenceOf(engine, target));
}

/// A prune that took a part only neither happened nor did not.
IrreversibleFinding lookFor(const DockerEngine& engine, const DockerCleanupOperation& prune) {
  if (prune.kind != DockerBulkKind::buildCache) return IrreversibleFinding::unknown;
  if (prune.reviewedTargets.empty()) return IrreversibleFinding::stillThere;
  const auto gone = goneOf(engine, prune);
  if (!gone) return IrreversibleFinding::unknown;
  if (gone->empty()) return IrreversibleFinding::stillThere;
  return gone->size() == prune.reviewedTargets.size() ? IrreversibleFinding::gone : IrreversibleFinding::unknown;
}

template <class Removed>
IrreversibleFinding look(const DockerClient& client, const Removed& removed) {
  if (!mayFollow(client, removed.scope)) return IrreversibleFinding::unknown;
  const DockerEngine engine(client, removed.scope.endpoint, {});
  if (refusalOfEngine(engine, removed.scope)) return IrreversibleFinding::unknown;
  return lookFor(engine, removed);
}

}  // namespace

IrreversibleFinding DockerRemovalCheck::look(const CleaningHistoryItem& item) {
  const auto made = makeClient_();
  if (!made) return IrreversibleFinding::unknown;
  const DockerClient client = made->remembering(memory_);
  const IrreversibleFinding found = item.dockerTarget      ? quorvane::look(client, *item.dockerTarget)
                                    : item.dockerOperation ? quorvane::look(client, *item.dockerOperation)
                                                           : IrreversibleFinding::unknown;
  const bool mayStillHappen =
      item.pendingIrreversible && clock_.now() < item.pendingIrreversible->announcedAt + longestRemoval;
  return found == IrreversibleFinding::stillThere && mayStillHappen ? IrreversibleFinding::unknown : found;
}

bool mayFollow(const DockerClient& client, const DockerCleanupScope& scope) {
  if (isLocalEndpoint(scope.endpoint)) return true;
  const auto current = pinnedEngine(client, {});
  return current && current->endpoint == scope.endpoint;
}

}  // namespace quorvane
