#pragma once

#include "quorvane/base/Serialised.h"
#include "quorvane/core/TakenPlaces.h"
#include "quorvane/removal/RunReport.h"

#include <future>
#include <memory>
#include <optional>
#include <vector>

namespace quorvane {

/// An item that was proved to be what was reviewed, and is to be moved.
struct ProvedItem {
  std::size_t index;  ///< of its request
  FilePath canonicalPath;
  ItemPlace place;
  std::int64_t size = 0;   ///< bytes, as measured
  FileStatus proven = {};  ///< when it was measured
};

using ProvedBatch = std::vector<ProvedItem>;

/// Moves the batches of one run, one after the other. While the items of one are moved, on a thread for that, the
/// caller proves the next one and has it announced. What became of some batches is written together, with a later
/// announcement or at the end.
///
/// Its functions are called on one thread, and what they report is told there.
class BatchMover {
 public:
  struct Run {
    const std::vector<RemovalRequest>& requests;
    const RemovalOptions& options;
    std::shared_ptr<OpenHistory> history;
    Date date;  ///< of the run
  };

  /// Everything handed over outlives the object.
  BatchMover(const RemovalServices& services, Run run, RunReport& report);

  /// Announces a batch, waits for the one before, and begins to move this one; the last one is moved at once. When it
  /// cannot be announced none of it is moved, and what was moved before stays unrecorded; but for a full history, which
  /// still takes that.
  Outcome<void, RecoveryStoreError> move(ProvedBatch batch, bool isLast);

  /// Waits for the batch that is being moved, and reports it.
  void wait();

  /// Whether a place is being moved, lies in one that is, or holds one.
  bool isMoving(const FilePath& canonicalPath) const { return movingPlaces_.overlaps(canonicalPath); }
  /// Whether a place was moved, or lies in one that was.
  bool hasMoved(const FilePath& canonicalPath) const { return moved_.covers(canonicalPath); }

  /// Waits, and records what is not recorded yet. What cannot be recorded is reported as a failure, though it is moved.
  Outcome<void, RecoveryStoreError> finish();

 private:
  /// A batch that was announced.
  struct Moving {
    CleanupMoveJournal::Transaction transaction;
    ProvedBatch batch;
    std::promise<void> tried;  ///< all of it

    Moving(CleanupMoveJournal::Transaction begun, ProvedBatch announced)
        : transaction(std::move(begun)), batch(std::move(announced)) {}
  };

  std::size_t openFolderCount() const;
  CleanupMoveJournal::Request requestFor(const ProvedItem& item);
  Uuid identifierOf(const ProvedItem& item);
  void start(CleanupMoveJournal::Transaction begun, ProvedBatch batch, bool isLast);
  void perform(Moving& moving);
  void startThread();
  std::optional<std::int64_t> availableBytes();
  OpenHistory::Change conclude(std::optional<std::int64_t> availableBytesDelta = std::nullopt);
  void noteRecorded();
  void keepUnrecorded();

  const RemovalServices& services_;
  Run run_;
  RunReport& report_;
  CleanupMoveJournal journal_;
  FilePath measuredFolder_;  ///< on the volume whose free space is measured: that of the first item
  std::optional<std::int64_t> availableBefore_;
  TakenPlaces movingPlaces_;
  TakenPlaces moved_;
  std::vector<std::unique_ptr<Moving>> unrecorded_;  ///< were moved; what became of them is still to be written
  std::unique_ptr<Moving> moving_;
  struct Moves {};
  std::unique_ptr<Serialised<Moves>> thread_;  ///< works on `moving_`; made for the first batch that is not the last
};

}  // namespace quorvane
