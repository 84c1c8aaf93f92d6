#pragma once

#include "quorvane/base/StopToken.h"
#include "quorvane/platform/RandomSource.h"
#include "quorvane/removal/CleanupMoveJournal.h"
#include "quorvane/removal/IrreversibleCheck.h"
#include "quorvane/removal/OpenHistory.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// What came of a batch of restores.
struct RecoveryBatchResult {
  std::vector<CleaningHistoryEntry> entries;  ///< those that were asked for, as they are now
  std::int64_t restoredCount = 0;
  std::int64_t failedCount = 0;
  std::int64_t remainingCount = 0;  ///< items of those entries that are still in the Trash

  bool operator==(const RecoveryBatchResult&) const = default;
};
QV_JSON_FIELDS(RecoveryBatchResult, entries, restoredCount, failedCount, remainingCount)

/// Pretty-printed with sorted keys.
std::string jsonText(const RecoveryBatchResult& result);

/// The history as somebody looks at it.
struct HistoryView {
  std::vector<CleaningHistoryEntry> entries;  ///< newest first
  std::int64_t pendingCount = 0;              ///< items that are still pending
  bool isInFlight = false;                    ///< another run holds the lock: the pending items are its own
};

/// What came of a restore.
struct RestoreReport {
  RecoveryBatchResult result;
  /// The history became unavailable in between: no more was put back, and items that were may read as under way until
  /// the next start.
  std::optional<RecoveryStoreError> interruption = std::nullopt;
};

struct RestoreOptions {
  RestoreConflictPolicy onConflict = RestoreConflictPolicy::skip;
  /// Where items may go, links resolved; nothing outside of it is restored. None: anywhere.
  std::optional<FilePath> confinedTo = std::nullopt;
  StopToken stop = {};  ///< ends the batch after the item in hand
  std::function<void(std::size_t done, std::size_t count)> progressed = {};
};

/// Keeps the cleaning history in "history.json" in the application-support folder, and puts items back.
///
/// One call at a time. Every call that takes the lock first settles what an earlier run left pending; none waits for
/// the lock. A history that cannot be trusted, read or decoded refuses every call and stays untouched.
class HistoryStore {
 public:
  /// Everything handed over outlives the store. `irreversible` settles removals for good; without it they stay pending.
  HistoryStore(const MoveServices& services, RandomSource& random, const FilePath& applicationSupport,
               IrreversibleCheck* irreversible = nullptr);

  /// All entries. Takes the lock only where something is pending; makes nothing where there is no history.
  Outcome<HistoryView, RecoveryStoreError> load();

  /// The history under its lock, with nothing pending that could be settled: to begin moves with.
  Outcome<std::shared_ptr<OpenHistory>, RecoveryStoreError> open();

  /// A date for a new run: now, or the next second that no entry has.
  Date dateOfNewRun(const OpenHistory& history) const;

  /// Puts items back where they were, in their order, and goes on after a failure. References that name nothing count
  /// as failed. After a stop the items that were not begun count neither way. Fails only where nothing was put back;
  /// later, the items that are left count as failed.
  Outcome<RestoreReport, RecoveryStoreError> restore(const std::vector<RecoveryReference>& references,
                                                     const RestoreOptions& options);

 private:
  Outcome<HistoryView, RecoveryStoreError> loadUnlocked();

  const MoveServices& services_;
  RandomSource& random_;
  FilePath fileURL_;
  IrreversibleCheck* irreversible_;
  HistoryCache cache_;
};

}  // namespace quorvane
