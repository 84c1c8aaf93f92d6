#include "quorvane/removal/Remover.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/removal/RemovalGuard.h"
#include "quorvane/removal/RemovalRun.h"

namespace quorvane {

RemovalRefusal refusalOf(const MoveFailure& failure) { return {messageKey(failure), categoryOf(failure)}; }

RemovalRefusal protectedRefusal() { return {"cleanup.failure.protected", CleanupFailureCategory::protected_}; }

RemovalRefusal mountRefusal() { return {"cleanup.failure.mountPoint", CleanupFailureCategory::protected_}; }

Remover::Remover(RemovalServices services, const FilePath& home, const FilePath& applicationSupport)
    : services_(services), home_(home), applicationSupport_(applicationSupport) {}

Outcome<RemovalReport, RemovalError> Remover::remove(const std::vector<RemovalRequest>& requests,
                                                     const RemovalChecks& checks, const RemovalOptions& options) {
  auto ignoreRules = services_.ignoreStore.load();
  if (!ignoreRules) return failure(RemovalError(ignoreRules.error()));
  auto mountPoints = services_.moves.volumes.mountPoints();
  if (!mountPoints) return failure(RemovalError(mountPoints.error()));
  const RemovalGuard guard(services_.moves.fileSystem,
                           {home_, applicationSupport_, *std::move(ignoreRules), *std::move(mountPoints)});
  RemovalRun::Task task{.requests = requests, .checks = checks, .options = options, .history = {}, .date = {}};
  if (!options.isRehearsal && !requests.empty()) {
    auto history = services_.history.open();
    if (!history) return failure(RemovalError(history.error()));
    task.history = *std::move(history);
    task.date = services_.history.dateOfNewRun(*task.history);
  }
  return RemovalRun(services_, guard, std::move(task)).perform();
}

Outcome<RemovalRequest, RemovalRefusal> Remover::review(const FilePath& path, StopToken stop) {
  GuardedPlaces places{home_, applicationSupport_};
  if (auto ignoreRules = services_.ignoreStore.load()) places.ignoreRules = *std::move(ignoreRules);
  if (auto mountPoints = services_.moves.volumes.mountPoints()) places.mountPoints = *std::move(mountPoints);
  const RemovalGuard guard(services_.moves.fileSystem, std::move(places));
  const auto canonicalPath = guard.admitted(path);
  if (!canonicalPath) return failure(canonicalPath.error());
  const auto tree = measured(guard, *canonicalPath, std::move(stop));
  if (!tree) return failure(tree.error());
  return RemovalRequest{.id = services_.random.uuid(),
                        .name = withReplacedInvalidUtf8(leafOf(path)),
                        .path = path,
                        .size = tree->allocatedBytes,
                        .snapshot = snapshotOf(*tree, *canonicalPath)};
}

Outcome<TreeMeasurement, RemovalRefusal> Remover::measured(const RemovalGuard& guard, const FilePath& canonicalPath,
                                                           StopToken stop) {
  const auto place = placeOf(services_.moves.fileSystem, canonicalPath);
  if (!place) return failure(refusalOfPath(place.error()));
  if (auto refusal = guard.refusalOfObject(*place, canonicalPath)) return failure(*std::move(refusal));
  WalkRequest walk;
  walk.stop = std::move(stop);
  auto outcomes = services_.walker.measure({{place->folder.number(), place->name}}, walk);
  TreeOutcome& tree = outcomes.front();
  if (!tree) return failure(refusalOfPath(tree.error()));
  if (auto refusal = refusalOfUnproved(*tree)) return failure(*std::move(refusal));
  return *std::move(tree);
}

}  // namespace quorvane
