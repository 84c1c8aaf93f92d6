#pragma once

#include "quorvane/removal/IrreversibleCheck.h"
#include "quorvane/removal/OpenHistory.h"
#include "quorvane/removal/TrashLookup.h"

namespace quorvane {

/// Settles what earlier runs left pending, by looking where each item is now. Only what is certain is settled, all of
/// it in one write; what cannot be told (a Trash that is not there, say) stays pending for the next time.
class Reconciliation {
 public:
  /// Everything handed over outlives the object. Without a check, removals for good stay pending.
  Reconciliation(const MoveServices& services, OpenHistory& history, IrreversibleCheck* irreversible = nullptr)
      : services_(services), history_(history), irreversible_(irreversible), lookup_(services) {}

  Outcome<void, RecoveryStoreError> perform();

 private:
  /// Both say whether they changed the item; `date` is that of its entry.
  bool settleMove(CleaningHistoryItem& item, const CleanupMoveIntent& intent, Date date);
  bool settleRestore(CleaningHistoryItem& item);
  bool settleIrreversible(CleaningHistoryItem& item);

  void claimRecorded();
  std::vector<int> settledFolders() const;
  bool settleInTrash(CleaningHistoryItem& item, const RecordedTrash& trash, const std::string& leaf, Date date);
  void forgetUnfinished(const CleaningHistoryItem& item, const CleanupMoveIntent& intent, Date date);

  const MoveServices& services_;
  OpenHistory& history_;
  IrreversibleCheck* irreversible_;
  TrashLookup lookup_;
};

}  // namespace quorvane
