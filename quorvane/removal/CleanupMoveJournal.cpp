#include "quorvane/removal/CleanupMoveJournal.h"

#include "quorvane/base/Assert.h"
#include "quorvane/removal/DirectoryAnchor.h"

#include <algorithm>
#include <cerrno>
#include <set>

namespace quorvane {

namespace {

/// A place that was handed to the administrator mover, which has not answered.
struct ExternalMove {
  FileIdentity identity;
  FilePath path;
  FilePath resolvedPath;
};

FilePath resolvedOrGiven(FileSystem& fileSystem, const FilePath& path) {
  auto resolved = fileSystem.resolved(path);
  return resolved ? *std::move(resolved) : path;
}

std::vector<ExternalMove> externalMoves(FileSystem& fileSystem, const HistoryDocument& history) {
  std::vector<ExternalMove> moves;
  for (const CleaningHistoryEntry& entry : history.entries())
    for (const CleaningHistoryItem& item : entry.items)
      if (item.pendingCleanup && item.pendingCleanup->externalMoveRequested.value_or(false)) {
        const FilePath path = standardised(item.originalPath);
        moves.push_back({item.pendingCleanup->identity, path, resolvedOrGiven(fileSystem, path)});
      }
  return moves;
}

MoveFailure trashFailure(PosixError error) {
  const bool isUntrusted = error.isOtherKind() || error.code == EXDEV || error.isMissing();
  if (isUntrusted) return FileProtectionError::invalidRestore;
  return error;
}

/// Checks the requests of one transaction and makes the records of their moves.
class Beginning {
 public:
  Beginning(const MoveServices& services, const HistoryDocument& history)
      : services_(services), history_(history), externalMoves_(externalMoves(services.fileSystem, history)) {}

  using Move = CleanupMoveJournal::Transaction::Move;

  /// Fills in what the move needs to go on; the reason when it must not.
  std::optional<MoveFailure> prepare(Move& move, const ItemPlace* provenPlace) {
    CleaningHistoryItem& item = move.item();
    const bool isPendingShape =
        item.outcome == CleaningHistoryItemOutcome::failed && !item.trashedPath && !item.pendingCleanup;
    const bool isNew = !history_.knows(item.id) && identifiers_.insert(item.id).second;
    if (!isPendingShape || !isNew) return FileProtectionError::changed;
    if (provenPlace != nullptr) return prepareAt(move, *provenPlace);
    const auto place = placeOf(services_.fileSystem, item.originalPath);
    return place ? prepareAt(move, *place) : std::optional<MoveFailure>(place.error());
  }

 private:
  std::optional<MoveFailure> prepareAt(Move& move, const ItemPlace& place) {
    const auto status = services_.fileSystem.status(place.folder->number(), place.name.c_str());
    if (!status) return status.error();
    move.identity = identityOf(*status);
    if (!isUnchanged(move.proven, *status)) return FileProtectionError::changed;
    if (std::ranges::any_of(externalMoves_, [&](const ExternalMove& other) { return blocks(other, move); }))
      return CleanupMoveError::externalMovePending;
    return chooseTrash(move, place);
  }

  bool blocks(const ExternalMove& other, const Move& move) const {
    const FilePath& path = move.item().originalPath;
    return other.identity == move.identity || overlap(other.path, path) || overlap(other.resolvedPath, path);
  }

  std::optional<MoveFailure> chooseTrash(Move& move, const ItemPlace& place) {
    const FilePath folderPath = parentOf(move.item().originalPath);
    if (!trash_ || folderPath != lastFolder_) {
      const auto folder = services_.fileSystem.status(place.folder->number());
      if (!folder) return folder.error();
      if (!trash_ || mount_ != folder->mount || device_ != folder->device)
        if (auto failed = openTrash(move.item().originalPath, *folder)) return failed;
      lastFolder_ = folderPath;
    }
    // Also an object that is itself another volume's root has another device.
    if (trashIdentity_.device != move.identity.device) return FileProtectionError::invalidRestore;
    move.trash = trash_;
    move.item().pendingCleanup = CleanupMoveIntent{.identity = move.identity,
                                                   .trashDirectory = trash_->directory(),
                                                   .trashLocation = anchor_,
                                                   .externalMoveRequested = {},
                                                   .externalMoveTerminalState = {}};
    return std::nullopt;
  }

  /// Most items of a run lie on one mount and share its Trash.
  std::optional<MoveFailure> openTrash(const FilePath& path, const FileStatus& folder) {
    trash_ = nullptr;
    auto opened = services_.trash.folderFor(path);
    if (!opened) return trashFailure(opened.error());
    const auto status = services_.fileSystem.status((*opened)->descriptor());
    if (!status) return status.error();
    if (!status->isFolder()) return FileProtectionError::invalidRestore;
    trash_ = *std::move(opened);
    mount_ = folder.mount;
    device_ = folder.device;
    trashIdentity_ = identityOf(*status);
    anchor_ = anchorOf(services_.fileSystem, services_.volumes, trash_->descriptor(), trash_->directory());
    return std::nullopt;
  }

  const MoveServices& services_;
  const HistoryDocument& history_;
  std::vector<ExternalMove> externalMoves_;
  std::set<Uuid> identifiers_;  ///< of this transaction
  std::shared_ptr<TrashFolder> trash_;
  FilePath lastFolder_;  ///< items of one folder follow each other
  std::uint64_t mount_ = 0;
  std::int32_t device_ = 0;
  FileIdentity trashIdentity_;
  std::optional<CleanupDirectoryAnchor> anchor_;
};

CleaningHistoryEntry receiptFor(CleanupMoveJournal::Request request, CleaningHistorySource source, Date date) {
  CleaningHistoryEntry entry;
  entry.id = request.item.id;
  entry.date = date;
  entry.source = source;
  entry.failures = {request.item.name};
  entry.uninstallContext = std::move(request.uninstallContext);
  entry.isCleanupReceipt = true;
  entry.items.push_back(std::move(request.item));
  return entry;
}

}  // namespace

Outcome<CleanupMoveJournal::Transaction, RecoveryStoreError> CleanupMoveJournal::begin(
    const std::shared_ptr<OpenHistory>& history, std::vector<Request> requests, CleaningHistorySource source, Date date,
    OpenHistory::Change alongside) {
  require(requests.size() <= mostMoves, "a transaction carries a limited number of moves");
  Beginning beginning(services_, history->document());
  Transaction transaction(services_, history);
  OpenHistory::Change change = std::move(alongside);
  for (Request& request : requests) {
    const ItemPlace* const place = request.place;
    const FileStatus proven = request.proven.value_or(FileStatus{});  // which is no object's
    Transaction::Move move{.receipt = receiptFor(std::move(request), source, date), .proven = proven};
    move.failure = beginning.prepare(move, place);
    move.item().failureReason = services_.texts(journalKeys::interrupted);
    move.isAnnounced = !move.failure;
    if (move.isAnnounced) change.inserted.push_back(move.receipt);
    transaction.moves_.push_back(std::move(move));
  }
  if (change.isEmpty() && change.changedFolders.empty()) return transaction;
  std::ranges::reverse(change.inserted);  // the last one is the newest
  if (auto written = history->write(std::move(change)); !written) return failure(written.error());
  return transaction;
}

}  // namespace quorvane
