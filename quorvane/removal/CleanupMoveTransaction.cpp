#include "quorvane/removal/CleanupMoveJournal.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

namespace quorvane {

namespace {

using Transaction = CleanupMoveJournal::Transaction;

TrashNote noteOf(const Transaction::Move& move) {
  return {.originalPath = move.item().originalPath, .deletedAt = move.receipt.date, .move = move.item().id};
}

void recordFailure(CleaningHistoryEntry& receipt, const MoveFailure& failure, const RecordTexts& texts) {
  CleaningHistoryItem& item = receipt.items.front();
  item.pendingCleanup.reset();
  item.failureReason = texts(messageKey(failure));
  item.failureCategory = categoryOf(failure);
}

void recordSuccess(CleaningHistoryEntry& receipt, const FilePath& trashed, const FileIdentity& identity) {
  CleaningHistoryItem& item = receipt.items.front();
  markMovedToTrash(item, trashed, identity);
  receipt.itemCount = 1;
  receipt.reclaimedBytes = item.size;
  receipt.failures.clear();
}

}  // namespace

Outcome<ItemPlace, MoveFailure> Transaction::verifySource(std::size_t index) {
  const Move& move = moves_[index];
  auto place = placeOf(services_.fileSystem, move.item().originalPath);
  if (!place) return failure(MoveFailure(place.error()));
  const auto status = services_.fileSystem.status(place->folder->number(), place->name.c_str());
  if (!status) return failure(MoveFailure(status.error()));
  if (!isUnchanged(move.proven, *status)) return failure(MoveFailure(FileProtectionError::changed));
  return *std::move(place);
}

std::optional<MoveFailure> Transaction::perform(std::size_t index) {
  Move& move = moves_[index];
  if (move.failure) return move.failure;
  auto place = verifySource(index);
  if (!place) return failed(move, place.error(), true);
  const auto leaf = move.trash->receive(place->folder->number(), place->name, noteOf(move));
  if (!leaf) {
    const auto left = identityAt(services_.fileSystem, *place);
    return failed(move, leaf.error(), left && *left == move.identity);
  }
  move.leaf = *leaf;
  const FilePath trashed = joined(move.trash->directory(), move.leaf);
  if (auto failure = whyNotMoved(move, move.trash->descriptor(), move.leaf, *place))
    return failed(move, *std::move(failure), putBack(move, *place));
  recordSuccess(move.receipt, trashed, move.identity);
  move.isFinished = move.isSettled = true;
  noteEmptied(move.item().originalPath, place->folder);
  return std::nullopt;
}

MoveFailure Transaction::failed(Move& move, MoveFailure failure, bool isSettled) {
  move.failure = failure;
  move.isSettled = isSettled;
  return failure;
}

/// What was moved turned out not to be what was announced: somebody exchanged it at the last moment.
bool Transaction::putBack(Move& move, const ItemPlace& place) {
  const auto back = services_.fileSystem.renameExclusive(move.trash->descriptor(), move.leaf.c_str(),
                                                         place.folder->number(), place.name.c_str());
  if (!back) return false;
  (void)move.trash->forget(move.leaf);  // a note without an item misleads nobody into removing anything
  return true;
}

void Transaction::noteEmptied(const FilePath& path, const std::shared_ptr<const FileDescriptor>& folder) {
  emptiedFolders_.try_emplace(parentOf(path), folder);
}

Outcome<CleaningHistoryItem, MoveFailure> Transaction::complete(std::size_t index, const FilePath& trashed) {
  Move& move = moves_[index];
  // Reading its identity follows no link, so the folder's path stays the one it has with links resolved.
  if (parentOf(trashed) != move.trash->directory()) return failure(MoveFailure(FileProtectionError::changed));
  const auto inTrash = placeOf(services_.fileSystem, trashed);
  if (!inTrash) return failure(MoveFailure(inTrash.error()));
  const auto before = placeOf(services_.fileSystem, move.item().originalPath);
  if (!before) return failure(MoveFailure(before.error()));
  if (auto failed = whyNotMoved(move, inTrash->folder->number(), inTrash->name, *before))
    return failure(*std::move(failed));
  recordSuccess(move.receipt, trashed, move.identity);
  move.isFinished = move.isSettled = true;
  return move.item();
}

std::optional<MoveFailure> Transaction::whyNotMoved(const Move& move, int trash, const std::string& leaf,
                                                    const ItemPlace& before) const {
  const auto moved = services_.fileSystem.status(trash, leaf.c_str());
  if (!moved) return moved.error();
  if (identityOf(*moved) != move.identity) return FileProtectionError::changed;
  const auto left = identityAt(services_.fileSystem, before);
  // Programs make their caches again at once: what stands there now may be new.
  if (left && *left == move.identity) return FileProtectionError::changed;
  if (!left && !left.error().isMissing()) return left.error();
  return std::nullopt;
}

/// The folders that the moves changed, having told the Trash folders what they received.
std::vector<int> Transaction::changedFolders() {
  std::vector<std::pair<TrashFolder*, std::vector<TrashFolder::Size>>> received;  // in the order they were opened
  for (const Move& move : moves_) {
    if (!move.isFinished) continue;
    if (received.empty() || received.back().first != move.trash.get()) received.push_back({move.trash.get(), {}});
    if (isFolder(move.identity)) received.back().second.push_back({move.leaf, move.item().size});
  }
  std::vector<int> changed;
  for (const auto& [trash, folders] : received) {
    if (!folders.empty()) trash->tellSizes(folders);
    std::ranges::copy(trash->changedFolders(), std::back_inserter(changed));
  }
  for (const auto& [path, folder] : emptiedFolders_) changed.push_back(folder->number());
  return changed;
}

Outcome<std::vector<CleaningHistoryEntry>, RecoveryStoreError> Transaction::finish(
    std::optional<std::int64_t> observedAvailableBytesDelta) {
  if (auto written = history_->write(conclude(observedAvailableBytesDelta)); !written) return failure(written.error());
  return takeReceipts();
}

OpenHistory::Change Transaction::conclude(std::optional<std::int64_t> observedAvailableBytesDelta) {
  OpenHistory::Change change;
  change.changedFolders = changedFolders();
  for (Move& move : moves_) {
    if (!move.isAnnounced) continue;
    if (!move.wasTried()) change.erased.push_back(move.receipt.id);
    if (move.failure && !move.isFinished && move.isSettled) recordFailure(move.receipt, *move.failure, services_.texts);
    if (move.isFinished && observedAvailableBytesDelta)
      move.receipt.observedAvailableBytesDelta = std::exchange(observedAvailableBytesDelta, std::nullopt);
    if (move.isSettled) change.replaced.push_back(move.receipt);
  }
  return change;
}

std::vector<CleaningHistoryEntry> Transaction::takeReceipts() {
  std::vector<CleaningHistoryEntry> receipts;
  for (Move& move : moves_)
    if (move.isAnnounced && move.wasTried()) receipts.push_back(std::move(move.receipt));
  moves_.clear();
  return receipts;
}

Outcome<void, MoveFailure> Transaction::markExternalMoveRequested(std::size_t index) {
  if (const auto place = verifySource(index); !place) return failure(place.error());
  return change(index, [&](CleaningHistoryItem& item) {
    item.pendingCleanup->externalMoveRequested = true;
    item.failureReason = services_.texts(journalKeys::externalPending);
    return true;
  });
}

Outcome<void, MoveFailure> Transaction::recordExternalTerminalState(std::size_t index,
                                                                    AdministratorMoveTerminalState state) {
  return change(index, [&](CleaningHistoryItem& item) {
    if (!item.pendingCleanup->externalMoveRequested.value_or(false)) return false;
    item.pendingCleanup->externalMoveRequested.reset();
    item.pendingCleanup->externalMoveTerminalState = state;
    item.failureReason = services_.texts(journalKeys::interrupted);
    return true;
  });
}

/// Changes the open intent of a move in the history, at once.
Outcome<void, MoveFailure> Transaction::change(std::size_t index,
                                               const std::function<bool(CleaningHistoryItem&)>& apply) {
  Move& move = moves_[index];
  const CleaningHistoryEntry* known = history_->document().find(move.item().id);
  const bool isOpen = known != nullptr && known->isCleanupReceipt && known->items.size() == 1 &&
                      known->items.front().pendingCleanup.has_value();
  if (!isOpen) return failure(MoveFailure(FileProtectionError::changed));
  CleaningHistoryEntry changed = *known;
  if (!apply(changed.items.front())) return failure(MoveFailure(FileProtectionError::changed));
  if (auto written = history_->write({.replaced = {changed}}); !written) return failure(MoveFailure(written.error()));
  move.receipt = std::move(changed);
  return {};
}

}  // namespace quorvane
