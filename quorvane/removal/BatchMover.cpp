#include "quorvane/removal/BatchMover.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

namespace quorvane {

namespace {

/// What is moved has to be on the disk before it is recorded, and bringing a folder to the disk costs the same however
/// much was moved. Until then the items stand as announced.
constexpr std::size_t batchesRecordedTogether = 8;
constexpr std::size_t mostOpenFolders = 256;

RemovalRefusal uncertainRefusal() { return {"cleanup.failure.uncertain", CleanupFailureCategory::other}; }

}  // namespace

BatchMover::BatchMover(const RemovalServices& services, Run run, RunReport& report)
    : services_(services), run_(std::move(run)), report_(report), journal_(services.moves) {}

Outcome<void, RecoveryStoreError> BatchMover::move(ProvedBatch batch, bool isLast) {
  std::vector<CleanupMoveJournal::Request> requests;
  requests.reserve(batch.size());
  if (measuredFolder_.bytes.empty()) {
    measuredFolder_ = parentOf(batch.front().canonicalPath);
    availableBefore_ = availableBytes();
  }
  for (const ProvedItem& item : batch) requests.push_back(requestFor(item));
  const bool isRecording = unrecorded_.size() >= batchesRecordedTogether || openFolderCount() >= mostOpenFolders;
  auto begun = journal_.begin(run_.history, std::move(requests), run_.options.source, run_.date,
                              isRecording ? conclude() : OpenHistory::Change{});
  if (begun && isRecording) noteRecorded();
  wait();
  if (!begun) {
    if (begun.error().fault == RecoveryStoreFault::full) {
      (void)finish();  // what is moved is still recorded; where even that fails, it is reported
    } else {
      keepUnrecorded();
    }
    for (const ProvedItem& item : batch) report_.refuse(item.index, refusalOf(begun.error()));
    return failure(begun.error());
  }
  start(*std::move(begun), std::move(batch), isLast);
  return {};
}

std::size_t BatchMover::openFolderCount() const {
  std::size_t count = 0;
  for (const auto& moved : unrecorded_) count += moved->transaction.openFolderCount();
  return count;
}

CleanupMoveJournal::Request BatchMover::requestFor(const ProvedItem& proved) {
  const RemovalRequest& request = run_.requests[proved.index];
  CleaningHistoryItem item;
  item.id = identifierOf(proved);
  item.name = request.name;
  item.originalPath = proved.canonicalPath;
  item.size = proved.size;
  item.backupMetadata = request.backupMetadata;
  return {.item = std::move(item), .proven = proved.proven, .place = &proved.place};
}

/// That of the review, unless an earlier run used it: the same review may be acted upon again after an undo.
Uuid BatchMover::identifierOf(const ProvedItem& item) {
  const Uuid& reviewed = run_.requests[item.index].id;
  return run_.history->document().knows(reviewed) ? services_.random.uuid() : reviewed;
}

void BatchMover::start(CleanupMoveJournal::Transaction begun, ProvedBatch batch, bool isLast) {
  for (ProvedItem& item : batch) {
    movingPlaces_.take(item.canonicalPath);
    item.place = {};  // its folder is opened anew for the move
  }
  moving_ = std::make_unique<Moving>(std::move(begun), std::move(batch));
  if (!isLast) startThread();
  if (isLast || !thread_) return perform(*moving_);
  thread_->perform([this, &moving = *moving_](Moves&) { perform(moving); });
}

void BatchMover::startThread() {
  try {
    if (!thread_) thread_ = std::make_unique<Serialised<Moves>>();
  } catch (const std::system_error&) {
    // No thread is to be had: then each batch is moved before the next one is proved.
  }
}

void BatchMover::perform(Moving& moving) {
  for (std::size_t i = 0; i < moving.batch.size() && !run_.options.stop.stopRequested(); ++i)
    (void)moving.transaction.perform(i);  // the transaction keeps what came of it
  moving.tried.set_value();
}

std::optional<std::int64_t> BatchMover::availableBytes() {
  const auto capacity = services_.moves.volumes.capacity(measuredFolder_);
  return capacity ? std::optional(capacity->available) : std::nullopt;
}

void BatchMover::wait() {
  if (!moving_) return;
  moving_->tried.get_future().wait();
  const auto& moves = moving_->transaction.moves();
  for (std::size_t i = 0; i < moves.size(); ++i) {
    const ProvedItem& item = moving_->batch[i];
    if (moves[i].isFinished) {
      moved_.take(item.canonicalPath);
      report_.noteMoved(item.index, item.size);
    } else if (const auto& reason = moves[i].failure) {
      RemovalRefusal refusal = refusalOf(*reason);
      report_.refuse(item.index, moves[i].isUncertain() ? uncertainRefusal() : std::move(refusal));
    } else {
      report_.noteStopped();
    }
  }
  unrecorded_.push_back(std::move(moving_));
  movingPlaces_ = {};
}

Outcome<void, RecoveryStoreError> BatchMover::finish() {
  wait();
  if (unrecorded_.empty()) return {};
  const auto after = availableBytes();
  if (report_.result.movedCount > 0 && availableBefore_ && after)
    report_.result.availableBytesDelta = *after - *availableBefore_;
  auto written = run_.history->write(conclude(report_.result.availableBytesDelta));
  if (written) {
    noteRecorded();
  } else {
    keepUnrecorded();
  }
  return written;
}

/// Of all that is not recorded yet. The difference of free space goes to the first item that was moved.
OpenHistory::Change BatchMover::conclude(std::optional<std::int64_t> availableBytesDelta) {
  OpenHistory::Change all;
  for (const auto& moved : unrecorded_) {
    const bool hasMoved =
        std::ranges::any_of(moved->transaction.moves(), &CleanupMoveJournal::Transaction::Move::isFinished);
    OpenHistory::Change one =
        moved->transaction.conclude(hasMoved ? std::exchange(availableBytesDelta, std::nullopt) : std::nullopt);
    std::ranges::move(one.replaced, std::back_inserter(all.replaced));
    std::ranges::move(one.erased, std::back_inserter(all.erased));
    std::ranges::move(one.changedFolders, std::back_inserter(all.changedFolders));
  }
  return all;
}

void BatchMover::noteRecorded() {
  for (const auto& moved : unrecorded_)
    std::ranges::move(moved->transaction.takeReceipts(), std::back_inserter(report_.result.entries));
  unrecorded_.clear();
}

/// What was moved is in the Trash, but its record still reads "interrupted".
void BatchMover::keepUnrecorded() {
  (void)conclude();  // so that each entry tells what came of its item, though it is not written
  for (const auto& moved : unrecorded_) {
    for (std::size_t i = 0; i < moved->batch.size(); ++i) {
      const CleanupMoveJournal::Transaction::Move& move = moved->transaction.moves()[i];
      if (!move.isAnnounced || !move.wasTried()) continue;
      CleaningHistoryEntry& entry = report_.result.entries.emplace_back(move.receipt);
      if (!move.isFinished) continue;
      entry.items.front().cleanupJournalUnavailable = true;
      entry.items.front().failureReason = services_.moves.texts(journalKeys::unavailable);
      report_.result.failures.push_back(
          {moved->batch[i].index, {std::string(journalKeys::unavailable), CleanupFailureCategory::other}});
    }
  }
  unrecorded_.clear();
}

}  // namespace quorvane
