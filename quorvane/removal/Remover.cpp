#include "quorvane/removal/Remover.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/removal/RemovalGuard.h"
#include "quorvane/removal/RemovalRun.h"

#include <algorithm>
#include <iterator>

namespace quorvane {

namespace {

constexpr std::size_t pathsAtOnce = 64;  // each may keep a folder of its own open

}  // namespace

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
  RemovalGuard guard(services_.moves.fileSystem, {home_, applicationSupport_, services_.moves.trash.homeTrash(),
                                                  *std::move(ignoreRules), *std::move(mountPoints)});
  RemovalRun::Task task{.requests = requests, .checks = checks, .options = options, .history = {}, .date = {}};
  if (!options.isRehearsal && !requests.empty()) {
    auto history = services_.history.open();
    if (!history) return failure(RemovalError(history.error()));
    task.history = *std::move(history);
    task.date = services_.history.dateOfNewRun(*task.history);
  }
  return RemovalRun(services_, guard, task).perform();
}

std::vector<ReviewOutcome> Remover::review(const std::vector<FilePath>& paths, const ReviewOptions& options) {
  GuardedPlaces places{home_, applicationSupport_, services_.moves.trash.homeTrash()};
  if (auto ignoreRules = services_.ignoreStore.load()) places.ignoreRules = *std::move(ignoreRules);
  if (auto mountPoints = services_.moves.volumes.mountPoints()) places.mountPoints = *std::move(mountPoints);
  RemovalGuard guard(services_.moves.fileSystem, std::move(places));
  std::vector<ReviewOutcome> reviewed;
  for (std::size_t at = 0; at < paths.size() && !options.stop.stopRequested(); at += pathsAtOnce) {
    if (options.progressed) options.progressed(at, paths.size(), paths[at]);
    const std::size_t count = std::min(pathsAtOnce, paths.size() - at);
    std::ranges::move(reviewTogether(guard, std::span(paths).subspan(at, count), options.stop),
                      std::back_inserter(reviewed));
  }
  return reviewed;
}

std::vector<ReviewOutcome> Remover::reviewTogether(RemovalGuard& guard, std::span<const FilePath> paths,
                                                   const StopToken& stop) {
  std::vector<ReviewOutcome> reviewed;
  ItemPlaces places(services_.moves.fileSystem);
  std::vector<ItemPlace> opened;
  std::vector<TreeRoot> roots;
  for (const FilePath& path : paths) {
    auto request = admitted(guard, path, places, opened);
    if (request) roots.push_back({opened.back().folder->number(), opened.back().name});
    reviewed.push_back(std::move(request));
  }
  WalkRequest walk;
  walk.stop = stop;
  const auto outcomes = services_.walker.measure(roots, walk);
  auto outcome = outcomes.begin();
  for (ReviewOutcome& each : reviewed)
    if (each) each = measured(guard, *std::move(each), *outcome++);
  if (stop.stopRequested()) reviewed.clear();
  return reviewed;
}

/// The request without its measurement; its place is added to the open ones.
ReviewOutcome Remover::admitted(RemovalGuard& guard, const FilePath& path, ItemPlaces& places,
                                std::vector<ItemPlace>& opened) {
  const auto canonicalPath = guard.admitted(path);
  if (!canonicalPath) return failure(canonicalPath.error());
  auto place = places.at(*canonicalPath);
  if (!place) return failure(refusalOfPath(place.error()));
  opened.push_back(*std::move(place));
  return RemovalRequest{.id = services_.random.uuid(),
                        .name = withReplacedInvalidUtf8(leafOf(path)),
                        .path = path,
                        .size = 0,
                        .snapshot = FileTreeSnapshot{{}, *canonicalPath, {}}};
}

ReviewOutcome Remover::measured(RemovalGuard& guard, RemovalRequest request, const TreeOutcome& tree) {
  if (!tree) return failure(refusalOfPath(tree.error()));
  const FilePath canonicalPath = request.snapshot ? request.snapshot->canonicalPath : request.path;
  if (auto refusal = guard.refusalOfObject(tree->root, canonicalPath)) return failure(*std::move(refusal));
  if (auto refusal = refusalOfUnproved(*tree)) return failure(*std::move(refusal));
  request.size = tree->allocatedBytes;
  request.snapshot = snapshotOf(*tree, canonicalPath);
  return request;
}

}  // namespace quorvane
