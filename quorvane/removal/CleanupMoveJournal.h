#pragma once

#include "quorvane/platform/Clock.h"
#include "quorvane/platform/Trash.h"
#include "quorvane/platform/Volumes.h"
#include "quorvane/removal/CleanupMoveError.h"
#include "quorvane/removal/ItemPlace.h"
#include "quorvane/removal/OpenHistory.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// What the journal works with; all of it outlives the journal.
struct MoveServices {
  FileSystem& fileSystem;
  Volumes& volumes;
  Trash& trash;
  const Clock& clock;
  RecordTexts texts;
};

/// Makes the move of items into the Trash survive a crash: what is about to be moved is in the history before, as a
/// failure that reads "interrupted", and reads "moved" only once the item was seen in the Trash.
class CleanupMoveJournal {
 public:
  /// As many items as one transaction carries.
  static constexpr std::size_t mostMoves = 64;

  class Transaction;

  /// One item to be moved. Its outcome is `failed` and it has no path in the Trash; `originalPath` is absolute with
  /// links resolved.
  struct Request {
    CleaningHistoryItem item;
    /// What the caller proved the item to be: only that is moved. Without it nothing is.
    std::optional<FileStatus> proven = std::nullopt;
    const ItemPlace* place = nullptr;  ///< where it was proved; none: what its path means now
    std::optional<UninstallHistoryContext> uninstallContext = std::nullopt;
  };

  explicit CleanupMoveJournal(const MoveServices& services) : services_(services) {}

  /// Writes the intents of up to `mostMoves` items down, in one write. Items that must not be moved are left out of it
  /// and have their failure in the transaction; the others go on. When the write fails, nothing may be moved.
  ///
  /// `alongside` is written in the same write: what the transaction before concluded with.
  Outcome<Transaction, RecoveryStoreError> begin(const std::shared_ptr<OpenHistory>& history,
                                                 std::vector<Request> requests, CleaningHistorySource source, Date date,
                                                 OpenHistory::Change alongside = {});

 private:
  const MoveServices& services_;
};

/// The moves that one write announced. Holds the lock of the history as long as it lives; one that is given up leaves
/// its records reading "interrupted".
class CleanupMoveJournal::Transaction {
 public:
  /// One of the moves, in the order of the requests.
  struct Move {
    CleaningHistoryEntry receipt;             ///< as it stands in the history
    std::shared_ptr<TrashFolder> trash = {};  ///< where the item goes
    FileStatus proven = {};                   ///< the item as its caller proved it
    FileIdentity identity = {};               ///< of the item when the intent was written
    std::string leaf = {};                    ///< in the Trash
    std::optional<MoveFailure> failure = {};  ///< it must not go on
    bool isAnnounced = false;                 ///< the receipt is in the history
    bool isSettled = false;                   ///< what became of it is known for certain
    bool isFinished = false;                  ///< it is verified in the Trash

    bool wasTried() const { return isFinished || failure; }
    /// It may be in its place or in the Trash; the next start finds out.
    bool isUncertain() const { return failure && !isSettled && isAnnounced; }

    const CleaningHistoryItem& item() const { return receipt.items.front(); }
    CleaningHistoryItem& item() { return receipt.items.front(); }
  };

  const std::vector<Move>& moves() const { return moves_; }
  /// How many folders that items left are kept open until it is concluded.
  std::size_t openFolderCount() const { return emptiedFolders_.size(); }

  /// Moves one item: reads its identity once more (`changed`), has the Trash receive it, verifies it there and at its
  /// old place. What turns out not to be the item is put back. The failure, if any, is also in the move.
  std::optional<MoveFailure> perform(std::size_t index);

  /// Whether the item is still the one that was announced, and unchanged itself; its place, to be moved from. Also the
  /// first step of `perform`.
  Outcome<ItemPlace, MoveFailure> verifySource(std::size_t index);

  /// Proves the move into the Trash: `trashed` lies in the announced Trash folder, is the announced item, and is not at
  /// its old place any more; another object may have been made there meanwhile. The finished item, which `finish`
  /// records. Also the last step of `perform`.
  Outcome<CleaningHistoryItem, MoveFailure> complete(std::size_t index, const FilePath& trashed);

  /// The item is about to be handed to the administrator mover. Written at once.
  Outcome<void, MoveFailure> markExternalMoveRequested(std::size_t index);
  /// The administrator mover answered. Written at once.
  Outcome<void, MoveFailure> recordExternalTerminalState(std::size_t index, AdministratorMoveTerminalState state);

  /// What `finish` writes, for whoever writes it together with something else, while the transaction lives.
  OpenHistory::Change conclude(std::optional<std::int64_t> observedAvailableBytesDelta = std::nullopt);
  /// The receipts that `finish` returns, once they are written. There are no moves afterwards.
  std::vector<CleaningHistoryEntry> takeReceipts();

  /// Brings the moves to the disk and writes all receipts in one write: finished ones, failures that are certain with
  /// their reason, and none for what was never tried. What is not certain stays as an intent. After a failure every
  /// intent stands: the next start finds out. The difference of free space goes to the first of the receipts.
  Outcome<std::vector<CleaningHistoryEntry>, RecoveryStoreError> finish(
      std::optional<std::int64_t> observedAvailableBytesDelta = std::nullopt);

 private:
  friend class CleanupMoveJournal;
  Transaction(const MoveServices& services, std::shared_ptr<OpenHistory> history)
      : services_(services), history_(std::move(history)) {}

  MoveFailure failed(Move& move, MoveFailure failure, bool isSettled);
  std::optional<MoveFailure> whyNotMoved(const Move& move, int trash, const std::string& leaf,
                                         const ItemPlace& before) const;
  bool putBack(Move& move, const ItemPlace& place);
  void noteEmptied(const FilePath& path, const std::shared_ptr<const FileDescriptor>& folder);
  std::vector<int> changedFolders();
  Outcome<void, MoveFailure> change(std::size_t index, const std::function<bool(CleaningHistoryItem&)>& apply);

  const MoveServices& services_;
  std::shared_ptr<OpenHistory> history_;
  std::vector<Move> moves_;
  std::map<FilePath, std::shared_ptr<const FileDescriptor>> emptiedFolders_;  ///< to be brought to the disk
};

}  // namespace quorvane
