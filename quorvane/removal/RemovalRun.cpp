#include "quorvane/removal/RemovalRun.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace quorvane {

namespace {

constexpr std::int64_t mostBytesOfBatch = std::int64_t{1} << 30;
constexpr std::chrono::seconds oldestUse{1};

}  // namespace

RemovalRun::RemovalRun(const RemovalServices& services, RemovalGuard& guard, const Task& task)
    : services_(services),
      guard_(guard),
      task_(task),
      report_(task.requests, task.options),
      mover_(services, {task.requests, task.options, task.history, task.date}, report_) {}

Outcome<RemovalReport, RemovalError> RemovalRun::perform() {
  // Listing all processes takes as long as proving the first batch, and can be done meanwhile.
  inUseReadAt_ = services_.moves.clock.uptime();
  firstReading_ = std::async([&] { return services_.processReader.read(); });
  if (task_.options.isRehearsal) {
    rehearse();
  } else if (const auto moved = move(); !moved) {
    const bool isUntouched = report_.result.movedCount == 0 && report_.result.entries.empty();
    if (isUntouched) return failure(RemovalError(moved.error()));
    for (; next_ < task_.requests.size() && !report_.isStopped(); ++next_)
      report_.refuse(next_, refusalOf(moved.error()));
  }
  std::ranges::sort(report_.result.failures, {}, &RemovalFailure::index);
  return std::move(report_.result);
}

void RemovalRun::rehearse() {
  while (next_ < task_.requests.size() && !report_.isStopped()) {
    for (const ProvedItem& item : nextBatch()) {
      gone_.take(item.canonicalPath);
      report_.result.wouldMove.push_back(item.index);
    }
  }
}

/// Without its journal nothing may be moved: ends with the first write that fails.
Outcome<void, RecoveryStoreError> RemovalRun::move() {
  while (next_ < task_.requests.size() && !report_.isStopped()) {
    ProvedBatch batch = nextBatch();
    if (batch.empty()) {
      mover_.wait();  // perhaps the next one lies in what is being moved
    } else if (auto moved = mover_.move(std::move(batch), next_ == task_.requests.size()); !moved) {
      return moved;
    }
  }
  return mover_.finish();
}

/// The next items that nothing speaks against. One that lies in another of the batch or of the one that is being moved,
/// or around it, is looked at once that one is gone.
ProvedBatch RemovalRun::nextBatch() {
  taken_ = {};
  ItemPlaces places(services_.moves.fileSystem);
  ProvedBatch batch;
  std::int64_t bytes = 0;
  for (; next_ < task_.requests.size() && !endsBatch(batch, bytes) && !report_.isStopped(); ++next_) {
    if (mover_.isMoving(reviewedPlace(next_))) break;
    auto item = admitted(next_, places);
    if (item && !taken_.take(item->canonicalPath)) break;
    if (!item) {
      report_.refuse(next_, std::move(item.error()));
      continue;
    }
    identifiers_.insert(task_.requests[next_].id);
    bytes += std::clamp<std::int64_t>(task_.requests[next_].size, 0, mostBytesOfBatch);
    batch.push_back(*std::move(item));
  }
  prove(batch);
  return batch;
}

bool RemovalRun::endsBatch(const ProvedBatch& batch, std::int64_t bytes) const {
  return batch.size() == CleanupMoveJournal::mostMoves || bytes >= mostBytesOfBatch;
}

Outcome<ProvedItem, RemovalRefusal> RemovalRun::admitted(std::size_t index, ItemPlaces& places) {
  const RemovalRequest& request = task_.requests[index];
  if (wentWithAnother(reviewedPlace(index)))
    return failure(RemovalRefusal{"cleanup.failure.inside", CleanupFailureCategory::missing});
  if (task_.checks.before)
    if (auto refusal = task_.checks.before(index)) return failure(*std::move(refusal));
  auto canonicalPath = guard_.admitted(request.path);
  if (!canonicalPath) return failure(std::move(canonicalPath.error()));
  const bool isElsewhere = request.snapshot && request.snapshot->canonicalPath != *canonicalPath;
  if (isElsewhere || identifiers_.contains(request.id)) return failure(refusalOf(FileProtectionError::changed));
  auto place = places.at(*canonicalPath);
  if (!place) return failure(refusalOfPath(place.error()));
  if (task_.options.isRehearsal)
    if (auto refusal = refusalOfRehearsed(*canonicalPath)) return failure(*std::move(refusal));
  return ProvedItem{.index = index, .canonicalPath = *std::move(canonicalPath), .place = *std::move(place)};
}

const FilePath& RemovalRun::reviewedPlace(std::size_t index) const {
  const RemovalRequest& request = task_.requests[index];
  return request.snapshot ? request.snapshot->canonicalPath : request.path;
}

bool RemovalRun::wentWithAnother(const FilePath& place) const {
  const FilePath folder = parentOf(place);
  return task_.options.isRehearsal ? gone_.covers(folder) : mover_.hasMoved(folder);
}

/// What was found to be movable before would have gone by now.
std::optional<RemovalRefusal> RemovalRun::refusalOfRehearsed(const FilePath& canonicalPath) {
  if (gone_.covers(canonicalPath)) return refusalOf(PosixError{ENOENT});
  if (gone_.overlaps(canonicalPath)) return refusalOf(FileProtectionError::changed);
  return std::nullopt;
}

/// Leaves in the batch what is unchanged, not in use, and passes the caller's check.
void RemovalRun::prove(ProvedBatch& batch) {
  std::vector<TreeRoot> roots;
  for (const ProvedItem& item : batch) roots.push_back({item.place.folder->number(), item.place.name});
  WalkRequest request;
  request.watchedNames = task_.checks.watchedNames;
  request.stop = task_.options.stop;
  const auto outcomes = services_.walker.measure(roots, request);
  ProvedBatch proved;
  for (std::size_t i = 0; i < batch.size(); ++i) {
    const TreeOutcome& outcome = outcomes[i];
    if (!outcome && outcome.error().isCancelled()) {
      report_.noteStopped();
      continue;
    }
    auto refusal = refusalOfTree(batch[i], outcome);
    if (!refusal && task_.checks.measured) refusal = task_.checks.measured(batch[i].index, *outcome);
    if (!refusal) refusal = refusalOfUse(batch[i].canonicalPath);
    if (refusal) {
      report_.refuse(batch[i].index, *std::move(refusal));
      continue;
    }
    batch[i].size = outcome->allocatedBytes;
    batch[i].proven = outcome->root;
    proved.push_back(std::move(batch[i]));
  }
  batch = std::move(proved);
}

std::optional<RemovalRefusal> RemovalRun::refusalOfTree(const ProvedItem& item, const TreeOutcome& outcome) {
  if (!outcome) return refusalOfPath(outcome.error());
  if (auto refusal = guard_.refusalOfObject(outcome->root, item.canonicalPath)) return refusal;
  const auto& reviewed = task_.requests[item.index].snapshot;
  const bool holdsMount = !outcome->mountsInside.empty();
  // Without a snapshot it could not be read as a whole when it was reviewed, either: that is no change.
  if (holdsMount || !reviewed)
    if (auto refusal = refusalOfUnproved(*outcome)) return refusal;
  const bool isUnchanged = reviewed && snapshotOf(*outcome, item.canonicalPath) == reviewed;
  return isUnchanged ? std::nullopt : std::optional(refusalOf(FileProtectionError::changed));
}

std::optional<RemovalRefusal> RemovalRun::refusalOfUse(const FilePath& canonicalPath) {
  const Clock& clock = services_.moves.clock;
  if (firstReading_.valid()) inUse_.emplace(firstReading_.get());
  if (!inUse_ || clock.uptime() - inUseReadAt_ > oldestUse) {
    inUseReadAt_ = clock.uptime();
    inUse_.emplace(services_.processReader.read());
  }
  if (!inUse_->couldReadProcesses()) return refusalOf(FileProtectionError::fileUseUnavailable);
  if (inUse_->isInUse(canonicalPath)) return refusalOf(FileProtectionError::fileInUse);
  return std::nullopt;
}

}  // namespace quorvane
