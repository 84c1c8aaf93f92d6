#include "quorvane/removal/Reconciliation.h"

#include "quorvane/removal/ItemPlace.h"

#include <algorithm>
#include <cerrno>

namespace quorvane {

namespace {

TrashNote noteOf(const CleaningHistoryItem& item, Date date) {
  return {.originalPath = item.originalPath, .deletedAt = date, .move = item.id};
}

/// Hard links of one file are the same object, so any of them is the item; its own name says most.
const std::string& bestOf(std::vector<std::string>& leaves, std::string_view ownLeaf) {
  std::ranges::sort(leaves);
  const auto own = std::ranges::find(leaves, ownLeaf);
  return own != leaves.end() ? *own : leaves.front();
}

void countMoved(CleaningHistoryEntry& entry) {
  entry.itemCount = 0;
  entry.reclaimedBytes = 0;
  entry.failures.clear();
  for (const CleaningHistoryItem& item : entry.items) {
    if (item.outcome == CleaningHistoryItemOutcome::failed) {
      entry.failures.push_back(item.name);
    } else {
      ++entry.itemCount;
      entry.reclaimedBytes += item.size;
    }
  }
}

}  // namespace

Outcome<void, RecoveryStoreError> Reconciliation::perform() {
  OpenHistory::Change change;
  for (const CleaningHistoryEntry& entry : history_.document().entries()) {
    if (std::ranges::none_of(entry.items, isPending)) continue;
    CleaningHistoryEntry settled = entry;
    bool isChanged = false;
    for (CleaningHistoryItem& item : settled.items) {
      if (item.pendingCleanup && settleMove(item, entry.date)) {
        isChanged = true;
        if (entry.isCleanupReceipt) countMoved(settled);
      }
      if (item.pendingRestorePath && settleRestore(item)) isChanged = true;
    }
    if (isChanged) change.replaced.push_back(std::move(settled));
  }
  if (change.replaced.empty()) return {};
  return history_.write(std::move(change));
}

bool Reconciliation::settleMove(CleaningHistoryItem& item, Date date) {
  const CleanupMoveIntent& intent = *item.pendingCleanup;
  const auto source = readIdentity(services_.fileSystem, item.originalPath);
  if (!source && !source.error().isMissing()) return false;
  const bool isInPlace = source && *source == intent.identity;
  if (!isInPlace) {
    // What stands there now may have been made after the item was moved: programs make their caches again.
    auto lookup = lookup_.find(intent);
    auto* files = std::get_if<TrashLookup::Files>(&lookup);
    if (files == nullptr) return false;
    if (!files->leaves.empty()) return settleInTrash(item, *files, date);
  }
  if (intent.externalMoveRequested.value_or(false)) return false;
  forgetUnfinished(item, date);
  item.pendingCleanup.reset();
  if (!source) {
    item.failureReason = services_.texts(messageKey(MoveFailure(source.error())));
    item.failureCategory = CleanupFailureCategory::missing;
  }
  return true;
}

bool Reconciliation::settleInTrash(CleaningHistoryItem& item, TrashLookup::Files& files, Date date) {
  const std::string& leaf = bestOf(files.leaves, leafOf(item.originalPath));
  TrashFolder& trash = *files.trash.folder;
  const auto status = services_.fileSystem.status(trash.descriptor(), leaf.c_str());
  if (!status) return false;
  (void)trash.ensureNote(leaf, noteOf(item, date));  // the item itself is safe without
  markMovedToTrash(item, joined(trash.directory(), leaf), identityOf(*status));
  return true;
}

void Reconciliation::forgetUnfinished(const CleaningHistoryItem& item, Date date) {
  const CleanupMoveIntent& intent = *item.pendingCleanup;
  const auto trash = lookup_.open(intent.trashDirectory, intent.trashLocation);
  if (trash) trash->folder->forgetUnfinished(std::string(leafOf(item.originalPath)), noteOf(item, date));
}

bool Reconciliation::settleRestore(CleaningHistoryItem& item) {
  if (!item.trashedPath || !item.trashIdentity) return false;
  const auto trash = lookup_.open(parentOf(*item.trashedPath), item.trashLocation);
  if (!trash) return false;
  const std::string leaf(leafOf(*item.trashedPath));
  const auto isItem = [&](const Outcome<FileIdentity, PosixError>& found) {
    return found && isSameObject(*item.trashIdentity, *found, trash->volume);
  };
  const auto inTrash = readIdentity(services_.fileSystem, *item.trashedPath);
  const auto inPlace = readIdentity(services_.fileSystem, *item.pendingRestorePath);
  if (!inTrash && !inTrash.error().isMissing()) return false;
  if (!inPlace && !inPlace.error().isMissing()) return false;
  item.restoreAttemptedAt = wholeSeconds(services_.clock.now());
  if (!inTrash && isItem(inPlace)) {
    (void)trash->folder->forget(leaf);  // the item is back whatever becomes of its note
    markRestored(item, *item.pendingRestorePath, *item.restoreAttemptedAt);
  } else {
    item.restoreFailure = isItem(inTrash) ? RecoveryFailure::other
                          : inTrash       ? RecoveryFailure::changed
                                          : RecoveryFailure::missing;
    item.pendingRestorePath.reset();
  }
  return true;
}

}  // namespace quorvane
