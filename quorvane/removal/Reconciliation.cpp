#include "quorvane/removal/Reconciliation.h"

#include "quorvane/removal/ItemPlace.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace quorvane {

namespace {

TrashNote noteOf(const CleaningHistoryItem& item, Date date) {
  return {.originalPath = item.originalPath, .deletedAt = date, .move = item.id};
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
  const auto& entries = history_.document().entries();
  const auto holdsPending = [](const CleaningHistoryEntry& entry) {
    return std::ranges::any_of(entry.items, isPending);
  };
  if (std::ranges::none_of(entries, holdsPending)) return {};
  claimRecorded();
  if (irreversible_ != nullptr) irreversible_->begin();
  OpenHistory::Change change;
  for (const CleaningHistoryEntry& entry : entries) {
    if (!holdsPending(entry)) continue;
    CleaningHistoryEntry settled = entry;
    bool isChanged = false;
    for (CleaningHistoryItem& item : settled.items) {
      const std::optional<CleanupMoveIntent> intent = item.pendingCleanup;
      if (intent && settleMove(item, *intent, entry.date)) {
        isChanged = true;
        if (entry.isCleanupReceipt) countMoved(settled);
      }
      if (item.pendingRestorePath && settleRestore(item)) isChanged = true;
      if (item.pendingIrreversible && settleIrreversible(item)) {
        isChanged = true;
        countMoved(settled);
      }
    }
    if (isChanged) change.replaced.push_back(std::move(settled));
  }
  if (change.replaced.empty()) return {};
  change.changedFolders = settledFolders();
  return history_.write(std::move(change));
}

/// The Trash folders that a run may have left half done, having told them what they hold now.
std::vector<int> Reconciliation::settledFolders() const {
  std::vector<int> changed;
  for (const auto& trash : lookup_.folders()) {
    trash->tellSizes({});
    std::ranges::copy(trash->changedFolders(), std::back_inserter(changed));
  }
  return changed;
}

void Reconciliation::claimRecorded() {
  for (const CleaningHistoryEntry& entry : history_.document().entries())
    for (const CleaningHistoryItem& item : entry.items)
      if (isInTrash(item) && item.trashedPath) lookup_.claim(*item.trashedPath);
}

bool Reconciliation::settleMove(CleaningHistoryItem& item, const CleanupMoveIntent& intent, Date date) {
  const auto source = readIdentity(services_.fileSystem, item.originalPath);
  // A link or a file in the way means that the item is not there, either.
  const bool isGone = !source && (source.error().isMissing() || source.error().isOtherKind());
  if (!source && !isGone) return false;
  const bool isInPlace = source && *source == intent.identity;
  if (!isInPlace) {
    // What stands there now may have been made after the item was moved: programs make their caches again.
    const auto found = lookup_.find({intent, std::string(leafOf(item.originalPath)), item.id});
    if (!found) return false;
    if (found->leaf) return settleInTrash(item, found->trash, *found->leaf, date);
  }
  if (intent.externalMoveRequested.value_or(false)) return false;
  forgetUnfinished(item, intent, date);
  item.pendingCleanup.reset();
  if (!source && source.error().isMissing()) {
    item.failureReason = services_.texts(messageKey(MoveFailure(source.error())));
    item.failureCategory = CleanupFailureCategory::missing;
  }
  return true;
}

bool Reconciliation::settleInTrash(CleaningHistoryItem& item, const RecordedTrash& trash, const std::string& leaf,
                                   Date date) {
  const auto status = services_.fileSystem.status(trash.folder->descriptor(), leaf.c_str());
  if (!status) return false;
  (void)trash.folder->ensureNote(leaf, noteOf(item, date));  // the item itself is safe without
  const FilePath trashed = joined(trash.folder->directory(), leaf);
  markMovedToTrash(item, trashed, identityOf(*status));
  lookup_.claim(trashed);
  return true;
}

void Reconciliation::forgetUnfinished(const CleaningHistoryItem& item, const CleanupMoveIntent& intent, Date date) {
  const auto trash = lookup_.open(intent.trashDirectory, intent.trashLocation);
  if (!trash) return;
  // Runs that follow each other fast have dates that lie ahead of the clock, and so of the times of files.
  const Date announcedAt = std::min(date, history_.writtenAt().value_or(date));
  trash->folder->forgetUnfinished(std::string(leafOf(item.originalPath)), noteOf(item, announcedAt));
}

/// Says what became of it; never does it again.
bool Reconciliation::settleIrreversible(CleaningHistoryItem& item) {
  const auto finding = irreversible_ != nullptr ? irreversible_->look(item) : IrreversibleFinding::unknown;
  if (finding == IrreversibleFinding::unknown) return false;
  item.pendingIrreversible.reset();
  if (finding == IrreversibleFinding::gone) {
    item.outcome = CleaningHistoryItemOutcome::removed;
    item.failureReason.reset();
    item.failureCategory.reset();
  } else {
    item.failureReason = services_.texts("cleanup.irreversible.stillThere");
    item.failureCategory = CleanupFailureCategory::other;
  }
  return true;
}

bool Reconciliation::settleRestore(CleaningHistoryItem& item) {
  if (!item.trashedPath || !item.trashIdentity || !item.pendingRestorePath) return false;
  const FilePath trashed = *item.trashedPath, destination = *item.pendingRestorePath;
  const FileIdentity identity = *item.trashIdentity;
  const auto trash = lookup_.open(parentOf(trashed), item.trashLocation);
  const AnchorMatch volume = trash ? trash->volume : AnchorMatch::exact;
  const auto isItem = [&](const Outcome<FileIdentity, PosixError>& found) {
    return found && isSameObject(identity, *found, volume);
  };
  const auto inTrash = readIdentity(services_.fileSystem, trashed);
  const auto inPlace = readIdentity(services_.fileSystem, destination);
  if (!inTrash && !inTrash.error().isMissing()) return false;
  const Date now = wholeSeconds(services_.clock.now());
  if (!inTrash && isItem(inPlace)) {
    if (trash) (void)trash->folder->forget(std::string(leafOf(trashed)));  // the item is back without, too
    item.restoreAttemptedAt = now;
    markRestored(item, destination, now);
    return true;
  }
  const bool isPlaceKnown = inPlace || inPlace.error().isMissing();
  if (!trash || !isPlaceKnown) return false;
  item.restoreAttemptedAt = now;
  item.restoreFailure = isItem(inTrash) ? RecoveryFailure::other
                        : inTrash       ? RecoveryFailure::changed
                                        : RecoveryFailure::missing;
  item.pendingRestorePath.reset();
  return true;
}

}  // namespace quorvane
