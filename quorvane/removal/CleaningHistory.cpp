#include "quorvane/removal/CleaningHistory.h"

#include "quorvane/base/JsonText.h"
#include "quorvane/removal/HistoryJson.h"

namespace quorvane {

std::string titleKey(CleanupFailureCategory category) {
  return "cleanup.failure.category." + std::string(caseName(category));
}

std::string messageKey(RecoveryFailure failure) { return "recovery.failure." + std::string(caseName(failure)); }

bool isPending(const CleaningHistoryItem& item) {
  return item.pendingCleanup || item.pendingRestorePath || item.pendingIrreversible;
}

bool isRestorable(const CleaningHistoryItem& item) {
  return item.outcome == CleaningHistoryItemOutcome::movedToTrash && item.trashedPath && !item.restoredPath;
}

bool isInTrash(const CleaningHistoryItem& item) {
  return isRestorable(item) && item.restoreFailure != RecoveryFailure::missing;
}

void markMovedToTrash(CleaningHistoryItem& item, const FilePath& trashed, const FileIdentity& identity) {
  item.outcome = CleaningHistoryItemOutcome::movedToTrash;
  item.trashedPath = trashed;
  item.trashIdentity = identity;
  if (item.pendingCleanup) item.trashLocation = item.pendingCleanup->trashLocation;
  item.pendingCleanup.reset();
  item.failureReason.reset();
  item.failureCategory.reset();
}

void markRestored(CleaningHistoryItem& item, const FilePath& path, Date date) {
  item.restoredPath = path;
  item.restoredAt = date;
  item.pendingRestorePath.reset();
  item.restoreFailure.reset();
}

std::string jsonText(const CleaningHistoryEntry& entry) { return printedRecord(entry); }

std::string jsonText(const std::vector<CleaningHistoryEntry>& entries) { return printedRecord(entries); }

Outcome<CleaningHistoryEntry, JsonError> cleaningHistoryEntryFromJson(std::string_view text) {
  return recordFromText<CleaningHistoryEntry>(text);
}

}  // namespace quorvane
