#include "quorvane/removal/Restoration.h"

#include "quorvane/removal/RestoredName.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>

namespace quorvane {

namespace {

constexpr int mostNamesTried = 1000;

bool isDenied(PosixError error) { return error.isDenied() || error.code == EROFS; }

RecoveryFailure failureOf(PosixError error) {
  if (error.code == EEXIST || error.code == ENOTEMPTY) return RecoveryFailure::conflict;
  return isDenied(error) ? RecoveryFailure::permission : RecoveryFailure::other;
}

RecoveryFailure parentFailure(PosixError error) {
  const bool isGone = error.isMissing() || error.isOtherKind();
  return isGone ? RecoveryFailure::parentMissing : failureOf(error);
}

RecoveryFailure trashFailure(PosixError error) {
  if (error.isMissing()) return RecoveryFailure::missing;
  return isDenied(error) ? RecoveryFailure::permission : RecoveryFailure::changed;
}

}  // namespace

Outcome<RestoreReport, RecoveryStoreError> Restoration::perform(const std::vector<RecoveryReference>& references) {
  count_ = references.size();
  std::optional<RecoveryStoreError> interruption;
  std::span<const RecoveryReference> left(references);
  while (!left.empty() && !options_.stop.stopRequested() && !interruption) {
    const std::size_t size = sizeOfBatch(left);
    const auto done = restore(left.first(size));
    left = left.subspan(size);
    if (done) continue;
    if (!hasMoved_) return failure(done.error());
    interruption = done.error();
    failedCount_ = static_cast<std::int64_t>(count_) - restoredCount_;
  }
  return RestoreReport{resultFor(references), interruption};
}

/// An item that goes into, or in the place of, another one has to wait until that is back.
std::size_t Restoration::sizeOfBatch(std::span<const RecoveryReference> references) const {
  std::vector<FilePath> paths;
  for (const RecoveryReference& reference : references) {
    const CleaningHistoryItem* item = itemOf(reference);
    const FilePath path = item == nullptr ? FilePath{} : FilePath(item->originalPath);
    const auto isInWay = [&](const FilePath& other) { return item != nullptr && overlap(other, path); };
    if (paths.size() == CleanupMoveJournal::mostMoves || std::ranges::any_of(paths, isInWay)) break;
    paths.push_back(path);
  }
  return paths.size();
}

Outcome<void, RecoveryStoreError> Restoration::restore(std::span<const RecoveryReference> references) {
  std::vector<Return> batch;
  for (const RecoveryReference& reference : references) batch.push_back(plan(reference));
  if (auto announced = announce(batch); !announced) return announced;
  for (Return& each : batch) {
    if (!each.failure && options_.stop.stopRequested()) break;
    if (!each.failure) each.failure = move(each);
    each.isDone = !each.failure;
    hasMoved_ = hasMoved_ || each.isDone;
    if (each.isDone) ++restoredCount_;
    ++doneCount_;
    if (options_.progressed) options_.progressed(doneCount_, count_);
  }
  auto recorded = record(batch);
  filledFolders_.clear();
  destinations_.clear();
  return recorded;
}

Restoration::Return Restoration::plan(const RecoveryReference& reference) {
  Return planned{.reference = reference};
  const CleaningHistoryItem* item = itemOf(reference);
  if (item == nullptr || !isRestorable(*item) || !item->trashIdentity || !item->trashedPath) {
    planned.failure = RecoveryFailure::unsupported;
  } else if (item->pendingRestorePath) {
    planned.failure = RecoveryFailure::other;  // an earlier restore of it is not settled yet
  } else {
    planned.trashed = *item->trashedPath;
    planned.identity = *item->trashIdentity;
    planned.failure = findInTrash(*item, planned);
    if (!planned.failure) planned.failure = chooseDestination(*item, planned);
  }
  return planned;
}

std::optional<RecoveryFailure> Restoration::findInTrash(const CleaningHistoryItem& item, Return& planned) {
  auto trash = lookup_.open(parentOf(planned.trashed), item.trashLocation);
  if (!trash) return whyNoTrash(item, planned.trashed, trash.error());
  planned.trash = *std::move(trash);
  planned.leaf = leafOf(planned.trashed);
  return checkInTrash(planned);
}

/// A Trash that is missing may have been removed with all it held, or lie on a volume that is not there now.
RecoveryFailure Restoration::whyNoTrash(const CleaningHistoryItem& item, const FilePath& trashed,
                                        PosixError error) const {
  if (!error.isMissing() || !item.trashLocation) return trashFailure(error);
  FilePath above = parentOf(trashed);
  auto folder = services_.fileSystem.openRealFolder(above);
  for (; !folder && above.bytes != "/"; folder = services_.fileSystem.openRealFolder(above)) above = parentOf(above);
  const auto volume = folder ? services_.volumes.identity(folder->number()) : failure(folder.error());
  const CleanupDirectoryAnchor& recorded = *item.trashLocation;
  const bool isSameVolume = volume && uuidText(volume->uuid) == recorded.volumeUUID &&
                            volume->fileSystemID == std::array{recorded.fileSystemID0, recorded.fileSystemID1};
  return isSameVolume ? RecoveryFailure::missing : RecoveryFailure::other;
}

std::optional<RecoveryFailure> Restoration::checkInTrash(const Return& planned) const {
  const auto status = services_.fileSystem.status(planned.trash.folder->descriptor(), planned.leaf.c_str());
  if (!status) return trashFailure(status.error());
  const bool isItem = isSameObject(planned.identity, identityOf(*status), planned.trash.volume);
  return isItem ? std::nullopt : std::optional(RecoveryFailure::changed);
}

std::optional<RecoveryFailure> Restoration::chooseDestination(const CleaningHistoryItem& item, Return& planned) {
  const bool isOutside = options_.confinedTo && !isBelow(item.originalPath, *options_.confinedTo);
  if (isOutside) return RecoveryFailure::other;
  const auto place = placeOf(services_.fileSystem, item.originalPath);
  if (!place) return parentFailure(place.error());
  std::string name = place->name;
  const FilePath folder = parentOf(item.originalPath);
  for (int attempt = 1; attempt <= mostNamesTried; ++attempt) {
    planned.destination = joined(folder, name);
    const auto taken = services_.fileSystem.status(place->folder->number(), name.c_str());
    if (!taken && !taken.error().isMissing()) return failureOf(taken.error());
    if (!taken && destinations_.insert(planned.destination).second) return std::nullopt;
    if (options_.onConflict == RestoreConflictPolicy::skip) break;
    name = restoredName(place->name, isFolder(planned.identity), services_.clock.now(), attempt);
  }
  return RecoveryFailure::conflict;
}

Outcome<void, RecoveryStoreError> Restoration::announce(std::vector<Return>& batch) {
  std::map<Uuid, CleaningHistoryEntry> changed;
  for (Return& each : batch) {
    if (each.failure) continue;
    each.isAnnounced = true;
    const CleaningHistoryEntry& entry = *history_.document().find(each.reference.entryID);
    auto& items = changed.try_emplace(entry.id, entry).first->second.items;
    std::ranges::find(items, each.reference.itemID, &CleaningHistoryItem::id)->pendingRestorePath = each.destination;
  }
  if (changed.empty()) return {};
  OpenHistory::Change change;
  for (auto& [id, entry] : changed) change.replaced.push_back(std::move(entry));
  return history_.write(std::move(change));
}

std::optional<RecoveryFailure> Restoration::move(Return& planned) {
  auto place = placeOf(services_.fileSystem, planned.destination);
  if (!place) return parentFailure(place.error());
  if (const auto failed = checkInTrash(planned)) return failed;
  const auto moved = services_.fileSystem.renameExclusive(planned.trash.folder->descriptor(), planned.leaf.c_str(),
                                                          place->folder->number(), place->name.c_str());
  if (!moved) {
    planned.isUncertain = checkInTrash(planned).has_value();
    return failureOf(moved.error());
  }
  return verify(planned, *place);
}

std::optional<RecoveryFailure> Restoration::verify(Return& planned, ItemPlace& place) {
  const auto restored = identityAt(services_.fileSystem, place);
  if (!restored || !isSameObject(planned.identity, *restored, planned.trash.volume)) {
    // It was exchanged at the last moment: what was moved instead goes back to where it was.
    planned.isUncertain = !services_.fileSystem.renameExclusive(
        place.folder->number(), place.name.c_str(), planned.trash.folder->descriptor(), planned.leaf.c_str());
    return RecoveryFailure::changed;
  }
  (void)planned.trash.folder->forget(planned.leaf);  // the item is back whatever becomes of its note
  filledFolders_.try_emplace(parentOf(planned.destination), std::move(place.folder));
  return std::nullopt;
}

/// The folders that the batch changed, having told the Trash folders that items left.
std::vector<int> Restoration::changedFolders(const std::vector<Return>& batch) {
  std::set<TrashFolder*> emptied;
  for (const Return& each : batch)
    if (each.isDone) emptied.insert(each.trash.folder.get());
  std::vector<int> changed;
  changed.reserve(filledFolders_.size() + emptied.size());
  for (const auto& [path, folder] : filledFolders_) changed.push_back(folder->number());
  for (TrashFolder* trash : emptied) {
    trash->tellSizes({});
    std::ranges::copy(trash->changedFolders(), std::back_inserter(changed));
  }
  return changed;
}

Outcome<void, RecoveryStoreError> Restoration::record(const std::vector<Return>& batch) {
  const Date now = wholeSeconds(services_.clock.now());
  std::map<Uuid, CleaningHistoryEntry> changed;
  for (const Return& each : batch) {
    if (each.failure) ++failedCount_;
    if (itemOf(each.reference) == nullptr) continue;
    const CleaningHistoryEntry& entry = *history_.document().find(each.reference.entryID);
    auto& items = changed.try_emplace(entry.id, entry).first->second.items;
    CleaningHistoryItem& item = *std::ranges::find(items, each.reference.itemID, &CleaningHistoryItem::id);
    if (each.isAnnounced && !each.isUncertain) item.pendingRestorePath.reset();
    if (each.isDone) markRestored(item, each.destination, now);
    if (each.failure) item.restoreFailure = each.failure;
    if (each.isDone || each.failure) item.restoreAttemptedAt = now;
  }
  OpenHistory::Change change;
  for (auto& [id, entry] : changed) change.replaced.push_back(std::move(entry));
  change.changedFolders = changedFolders(batch);
  return history_.write(std::move(change));
}

const CleaningHistoryItem* Restoration::itemOf(const RecoveryReference& reference) const {
  const CleaningHistoryEntry* entry = history_.document().find(reference.entryID);
  if (entry == nullptr || entry->id != reference.entryID) return nullptr;
  const auto item = std::ranges::find(entry->items, reference.itemID, &CleaningHistoryItem::id);
  return item == entry->items.end() ? nullptr : &*item;
}

RecoveryBatchResult Restoration::resultFor(const std::vector<RecoveryReference>& references) const {
  RecoveryBatchResult result{
      .entries = {}, .restoredCount = restoredCount_, .failedCount = failedCount_, .remainingCount = 0};
  std::set<Uuid> told;
  for (const RecoveryReference& reference : references) {
    const CleaningHistoryEntry* entry = history_.document().find(reference.entryID);
    if (entry == nullptr || entry->id != reference.entryID || !told.insert(entry->id).second) continue;
    result.entries.push_back(*entry);
    result.remainingCount += std::ranges::count_if(entry->items, isInTrash);
  }
  return result;
}

}  // namespace quorvane
