#pragma once

#include "quorvane/removal/HistoryStore.h"
#include "quorvane/removal/TrashLookup.h"

#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace quorvane {

/// One batch of restores, under the lock of the history. Used once.
///
/// Up to 64 items at a time: where each goes is written down, each is moved with one rename that replaces nothing and
/// looked at again, and what became of them is written down.
class Restoration {
 public:
  /// Everything handed over outlives the object.
  Restoration(const MoveServices& services, OpenHistory& history, const RestoreOptions& options)
      : services_(services), history_(history), options_(options), lookup_(services) {}

  Outcome<RestoreReport, RecoveryStoreError> perform(const std::vector<RecoveryReference>& references);

 private:
  /// One item on its way back.
  struct Return {
    RecoveryReference reference;
    FilePath trashed = {};
    FileIdentity identity = {};
    RecordedTrash trash = {};
    std::string leaf = {};  ///< in the Trash
    FilePath destination = {};
    std::optional<RecoveryFailure> failure = {};
    bool isAnnounced = false;  ///< its destination is written down
    bool isUncertain = false;  ///< it may be here or there: the next start finds out
    bool isDone = false;
  };

  std::size_t sizeOfBatch(std::span<const RecoveryReference> references) const;
  Outcome<void, RecoveryStoreError> restore(std::span<const RecoveryReference> references);

  Return plan(const RecoveryReference& reference);
  std::optional<RecoveryFailure> findInTrash(const CleaningHistoryItem& item, Return& planned);
  RecoveryFailure whyNoTrash(const CleaningHistoryItem& item, const FilePath& trashed, PosixError error) const;
  std::optional<RecoveryFailure> chooseDestination(const CleaningHistoryItem& item, Return& planned);
  std::optional<RecoveryFailure> move(Return& planned);
  std::optional<RecoveryFailure> verify(Return& planned, ItemPlace& place);
  std::optional<RecoveryFailure> checkInTrash(const Return& planned) const;

  Outcome<void, RecoveryStoreError> announce(std::vector<Return>& batch);
  std::vector<int> changedFolders(const std::vector<Return>& batch);
  Outcome<void, RecoveryStoreError> record(const std::vector<Return>& batch);

  const CleaningHistoryItem* itemOf(const RecoveryReference& reference) const;
  RecoveryBatchResult resultFor(const std::vector<RecoveryReference>& references) const;

  const MoveServices& services_;
  OpenHistory& history_;
  const RestoreOptions& options_;
  TrashLookup lookup_;
  std::map<FilePath, std::shared_ptr<const FileDescriptor>> filledFolders_;  ///< to be brought to the disk
  std::set<FilePath> destinations_;                                          ///< chosen in this batch
  bool hasMoved_ = false;
  std::int64_t restoredCount_ = 0;
  std::int64_t failedCount_ = 0;
  std::size_t doneCount_ = 0;
  std::size_t count_ = 0;
};

}  // namespace quorvane
