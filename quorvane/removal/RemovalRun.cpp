#include "quorvane/removal/RemovalRun.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace quorvane {

namespace {

constexpr std::int64_t mostBytesOfBatch = std::int64_t{1} << 30;
constexpr std::chrono::seconds oldestUse{1};

RemovalRefusal uncertainRefusal() { return {"cleanup.failure.uncertain", CleanupFailureCategory::other}; }

/// Of an item that is not there any more: it went with another one, or just is not.
RemovalRefusal refusalOfGone(const TakenPlaces& moved, const FilePath& canonicalPath) {
  if (moved.covers(parentOf(canonicalPath))) return {"cleanup.failure.inside", CleanupFailureCategory::missing};
  return refusalOf(PosixError{ENOENT});
}

CleaningHistoryItem pendingItem(const RemovalRequest& request, const Uuid& id, const FilePath& canonicalPath,
                                std::int64_t size) {
  CleaningHistoryItem item;
  item.id = id;
  item.name = request.name;
  item.originalPath = canonicalPath;
  item.size = size;
  item.backupMetadata = request.backupMetadata;
  return item;
}

}  // namespace

RemovalRun::RemovalRun(const RemovalServices& services, RemovalGuard& guard, Task task)
    : services_(services), guard_(guard), task_(std::move(task)), journal_(services.moves) {}

Outcome<RemovalReport, RemovalError> RemovalRun::perform() {
  // Listing all processes takes as long as proving the first batch, and can be done meanwhile.
  inUseReadAt_ = services_.moves.clock.uptime();
  firstReading_ = std::async([&] { return services_.processReader.read(); });
  while (next_ < task_.requests.size() && !isStopped()) {
    Batch batch = gather();
    prove(batch);
    if (task_.options.isRehearsal) {
      std::ranges::transform(batch, std::back_inserter(report_.wouldMove), &Candidate::index);
    } else if (const auto moved = move(std::move(batch)); !moved) {
      const bool isUntouched = report_.movedCount == 0 && report_.entries.empty();
      if (isUntouched) return failure(RemovalError(moved.error()));
    }
  }
  recordLast();
  std::ranges::sort(report_.failures, {}, &RemovalFailure::index);
  return std::move(report_);
}

RemovalRun::Batch RemovalRun::gather() {
  if (!task_.options.isRehearsal) taken_ = {};
  Batch batch;
  std::int64_t bytes = 0;
  for (; next_ < task_.requests.size() && !endsBatch(batch, bytes) && !isStopped(); ++next_) {
    auto candidate = admitted(next_);
    // One that lies in another of the batch, or around it, is looked at once that one is gone.
    if (candidate && !task_.options.isRehearsal && !taken_.take(candidate->canonicalPath)) break;
    if (!candidate) {
      refuse(next_, std::move(candidate.error()));
      continue;
    }
    identifiers_.insert(task_.requests[next_].id);
    bytes += std::clamp<std::int64_t>(task_.requests[next_].size, 0, mostBytesOfBatch);
    batch.push_back(*std::move(candidate));
  }
  return batch;
}

bool RemovalRun::endsBatch(const Batch& batch, std::int64_t bytes) const {
  return batch.size() == CleanupMoveJournal::mostMoves || bytes >= mostBytesOfBatch;
}

Outcome<RemovalRun::Candidate, RemovalRefusal> RemovalRun::admitted(std::size_t index) {
  const RemovalRequest& request = task_.requests[index];
  if (task_.checks.before)
    if (auto refusal = task_.checks.before(index)) return failure(*std::move(refusal));
  auto canonicalPath = guard_.admitted(request.path);
  if (!canonicalPath) return failure(std::move(canonicalPath.error()));
  const bool isElsewhere = request.snapshot && request.snapshot->canonicalPath != *canonicalPath;
  if (isElsewhere || identifiers_.contains(request.id)) return failure(refusalOf(FileProtectionError::changed));
  auto place = placeOf(services_.moves.fileSystem, *canonicalPath);
  if (!place && place.error().isMissing()) return failure(refusalOfGone(moved_, *canonicalPath));
  if (!place) return failure(refusalOfPath(place.error()));
  Candidate candidate{.index = index, .canonicalPath = *std::move(canonicalPath), .place = *std::move(place)};
  if (auto refusal = refusalOfPlace(candidate)) return failure(*std::move(refusal));
  return candidate;
}

std::optional<RemovalRefusal> RemovalRun::refusalOfPlace(const Candidate& candidate) {
  if (!task_.options.isRehearsal) return std::nullopt;
  // What was found to be movable before would have gone by now.
  const bool isGone = taken_.covers(candidate.canonicalPath);
  if (isGone) return refusalOfGone(taken_, candidate.canonicalPath);
  if (!taken_.take(candidate.canonicalPath)) return refusalOf(FileProtectionError::changed);
  return std::nullopt;
}

/// Leaves in the batch what is unchanged, not in use, and passes the caller's check.
void RemovalRun::prove(Batch& batch) {
  std::vector<TreeRoot> roots;
  for (const Candidate& candidate : batch) roots.push_back({candidate.place.folder.number(), candidate.place.name});
  WalkRequest request;
  request.watchedNames = task_.checks.watchedNames;
  request.stop = task_.options.stop;
  const auto outcomes = services_.walker.measure(roots, request);
  Batch proved;
  for (std::size_t i = 0; i < batch.size(); ++i) {
    const TreeOutcome& outcome = outcomes[i];
    if (!outcome && outcome.error().isCancelled()) continue;
    auto refusal = refusalOfTree(batch[i], outcome);
    if (!refusal && task_.checks.measured) refusal = task_.checks.measured(batch[i].index, *outcome);
    if (!refusal) refusal = refusalOfUse(batch[i].canonicalPath);
    if (refusal) {
      refuse(batch[i].index, *std::move(refusal));
      continue;
    }
    batch[i].size = outcome->allocatedBytes;
    batch[i].proven = outcome->root;
    proved.push_back(std::move(batch[i]));
  }
  batch = std::move(proved);
}

std::optional<RemovalRefusal> RemovalRun::refusalOfTree(const Candidate& candidate, const TreeOutcome& outcome) {
  if (!outcome && outcome.error().isMissing()) return refusalOfGone(moved_, candidate.canonicalPath);
  if (!outcome) return refusalOfPath(outcome.error());
  if (auto refusal = guard_.refusalOfObject(outcome->root, candidate.canonicalPath)) return refusal;
  const auto& reviewed = task_.requests[candidate.index].snapshot;
  const bool holdsMount = !outcome->mountsInside.empty();
  // Without a snapshot it could not be read as a whole when it was reviewed, either: that is no change.
  if (holdsMount || !reviewed)
    if (auto refusal = refusalOfUnproved(*outcome)) return refusal;
  const bool isUnchanged = reviewed && snapshotOf(*outcome, candidate.canonicalPath) == reviewed;
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

/// Announces and moves a batch. What became of the one before is written together with the announcement.
Outcome<void, RecoveryStoreError> RemovalRun::move(Batch batch) {
  if (batch.empty()) return {};
  const auto availableBefore = availableBytes(batch);
  std::vector<CleanupMoveJournal::Request> requests;
  for (const Candidate& each : batch)
    requests.push_back(
        {.item = pendingItem(task_.requests[each.index], identifierOf(each), each.canonicalPath, each.size),
         .proven = each.proven,
         .place = &each.place});
  CleanupMoveJournal::Transaction::Conclusion before;
  if (moving_) before = moving_->transaction.conclude(moving_->availableBytesDelta);
  auto begun =
      journal_.begin(task_.history, std::move(requests), task_.options.source, task_.date, std::move(before.change));
  if (!begun) {
    keepUnrecorded();
    refuseRest(batch, begun.error());
    return failure(begun.error());
  }
  std::ranges::move(before.receipts, std::back_inserter(report_.entries));
  moving_.emplace(*std::move(begun), std::move(batch));
  perform(*moving_);
  noteAvailable(*moving_, availableBefore);
  return {};
}

void RemovalRun::recordLast() {
  if (!moving_) return;
  auto receipts = moving_->transaction.finish(moving_->availableBytesDelta);
  if (receipts) {
    std::ranges::move(*receipts, std::back_inserter(report_.entries));
    moving_.reset();
  } else {
    keepUnrecorded();
    refuseRest({}, receipts.error());
  }
}

/// That of the review, unless an earlier run used it: the same review may be acted upon again after an undo.
Uuid RemovalRun::identifierOf(const Candidate& candidate) {
  const Uuid& reviewed = task_.requests[candidate.index].id;
  return task_.history->document().knows(reviewed) ? services_.random.uuid() : reviewed;
}

void RemovalRun::perform(Moving& moving) {
  for (std::size_t i = 0; i < moving.batch.size() && !isStopped(); ++i) {
    const Candidate& candidate = moving.batch[i];
    if (const auto failed = moving.transaction.perform(i)) {
      const bool isUncertain = moving.transaction.moves()[i].isUncertain();
      refuse(candidate.index, isUncertain ? uncertainRefusal() : refusalOf(*failed));
    } else {
      moved_.take(candidate.canonicalPath);
      ++report_.movedCount;
      report_.movedBytes += candidate.size;
      noteDone(candidate.index);
    }
  }
}

void RemovalRun::noteAvailable(Moving& moving, std::optional<std::int64_t> before) {
  const auto after = availableBytes(moving.batch);
  const bool hasMoved =
      std::ranges::any_of(moving.transaction.moves(), &CleanupMoveJournal::Transaction::Move::isFinished);
  if (!hasMoved || !before || !after) return;
  moving.availableBytesDelta = *after - *before;
  report_.availableBytesDelta = report_.availableBytesDelta.value_or(0) + *moving.availableBytesDelta;
}

/// What was moved is in the Trash, but its record still reads "interrupted".
void RemovalRun::keepUnrecorded() {
  if (!moving_) return;
  for (std::size_t i = 0; i < moving_->batch.size(); ++i) {
    const CleanupMoveJournal::Transaction::Move& move = moving_->transaction.moves()[i];
    if (!move.isAnnounced || !(move.isFinished || move.failure)) continue;
    CleaningHistoryEntry entry = move.receipt;
    if (move.isFinished) {
      entry.items.front().cleanupJournalUnavailable = true;
      entry.items.front().failureReason = services_.moves.texts(journalKeys::unavailable);
      report_.failures.push_back(
          {moving_->batch[i].index, {std::string(journalKeys::unavailable), CleanupFailureCategory::other}});
    }
    report_.entries.push_back(std::move(entry));
  }
  moving_.reset();
}

std::optional<std::int64_t> RemovalRun::availableBytes(const Batch& batch) {
  const auto capacity = services_.moves.volumes.capacity(parentOf(batch.front().canonicalPath));
  return capacity ? std::optional(capacity->available) : std::nullopt;
}

void RemovalRun::refuse(std::size_t index, RemovalRefusal refusal) {
  report_.failures.push_back({index, std::move(refusal)});
  noteDone(index);
}

/// Without its journal nothing may be moved.
void RemovalRun::refuseRest(const Batch& batch, const RecoveryStoreError& error) {
  const RemovalRefusal refusal = refusalOf(error);
  for (const Candidate& candidate : batch) refuse(candidate.index, refusal);
  for (; next_ < task_.requests.size(); ++next_) refuse(next_, refusal);
}

void RemovalRun::noteDone(std::size_t index) {
  ++doneCount_;
  if (task_.options.progressed) task_.options.progressed(doneCount_, task_.requests.size(), task_.requests[index].path);
}

bool RemovalRun::isStopped() {
  if (task_.options.stop.stopRequested()) report_.wasStopped = true;
  return report_.wasStopped;
}

}  // namespace quorvane
