#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/Date.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/base/JsonRecord.h"
#include "quorvane/base/Uuid.h"
#include "quorvane/core/DockerTargets.h"
#include "quorvane/core/FileIdentity.h"
#include "quorvane/core/MobileBackupMetadata.h"
#include "quorvane/removal/CleanupMoveIntent.h"
#include "quorvane/removal/HistoryLocation.h"
#include "quorvane/removal/IrreversibleRemovalIntent.h"
#include "quorvane/removal/Recovery.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// docs/formats/history.md says what each member means and who writes it when.

namespace quorvane {

enum class CleaningHistoryItemOutcome {
  movedToTrash,
  removed,  ///< without the Trash, by a command
  failed,
};
QV_CASE_NAMES(CleaningHistoryItemOutcome, movedToTrash, removed, failed)

/// The service that made an entry.
enum class CleaningHistorySource { files, docker, ollama, xcode, android };
QV_CASE_NAMES(CleaningHistorySource, files, docker, ollama, xcode, android)

/// What kind of reason kept an item from being removed.
enum class CleanupFailureCategory { changedAfterScan, inUse, permission, missing, protected_, other };
constexpr auto caseNamesOf(CleanupFailureCategory) {
  using namespace std::string_view_literals;
  return std::array{"changedAfterScan"sv, "inUse"sv, "permission"sv, "missing"sv, "protected"sv, "other"sv};
}

/// "cleanup.failure.category." and the name of the case.
std::string titleKey(CleanupFailureCategory category);

/// The application whose removal an entry belongs to.
struct UninstallHistoryContext {
  std::string application;
  FileIdentity bundleIdentity;

  bool operator==(const UninstallHistoryContext&) const = default;
};
QV_JSON_FIELDS(UninstallHistoryContext, application, bundleIdentity)

/// One removed or attempted item.
struct CleaningHistoryItem {
  Uuid id;
  std::string name;                     ///< for people
  HistoryLocation originalPath;         ///< absolute, links resolved; of what is no file its name
  std::optional<FilePath> trashedPath;  ///< absent until the move is verified
  std::int64_t size = 0;                ///< bytes
  CleaningHistoryItemOutcome outcome = CleaningHistoryItemOutcome::failed;
  std::optional<FileIdentity> trashIdentity;            ///< of the item in the Trash
  std::optional<CleanupDirectoryAnchor> trashLocation;  ///< of the folder that it is in
  std::optional<FilePath> restoredPath;
  std::optional<Date> restoredAt;
  std::optional<FilePath> pendingRestorePath;                    ///< where a restore that is under way puts it
  std::optional<CleanupMoveIntent> pendingCleanup;               ///< the move that is under way
  std::optional<IrreversibleRemovalIntent> pendingIrreversible;  ///< the removal for good that is under way
  std::optional<bool> cleanupJournalUnavailable;                 ///< moved, but its record could not be completed
  std::optional<std::string> failureReason;                      ///< a text for people
  std::optional<CleanupFailureCategory> failureCategory;
  std::optional<RecoveryFailure> restoreFailure;
  std::optional<Date> restoreAttemptedAt;
  std::optional<MobileBackupMetadata> backupMetadata;
  std::optional<DockerRetryTarget> dockerTarget;          ///< what a Docker command removed, or was to
  std::optional<DockerCleanupOperation> dockerOperation;  ///< the same of a command for many objects

  bool operator==(const CleaningHistoryItem&) const = default;
};
QV_JSON_FIELDS(CleaningHistoryItem, id, name, originalPath, trashedPath, size, outcome, trashIdentity, trashLocation,
               restoredPath, restoredAt, pendingRestorePath, pendingCleanup, pendingIrreversible,
               cleanupJournalUnavailable, failureReason, failureCategory, restoreFailure, restoreAttemptedAt,
               backupMetadata, dockerTarget, dockerOperation)

/// Whether something about the item is under way, or was when a run ended unexpectedly.
bool isPending(const CleaningHistoryItem& item);

/// Whether the item was moved to the Trash and never put back.
bool isRestorable(const CleaningHistoryItem& item);

/// Whether the item is in the Trash as far as the record knows: restorable, and not found missing.
bool isInTrash(const CleaningHistoryItem& item);

/// The item is in the Trash: its outcome, path, identity and the anchor of its intent, which is done.
void markMovedToTrash(CleaningHistoryItem& item, const FilePath& trashed, const FileIdentity& identity);

/// The item is back, at this path.
void markRestored(CleaningHistoryItem& item, const FilePath& path, Date date);

/// One removal.
struct CleaningHistoryEntry {
  Uuid id;
  Date date;  ///< whole seconds; entries with the same date are of one run
  CleaningHistorySource source = CleaningHistorySource::files;
  std::int64_t itemCount = 0;         ///< items that were removed
  std::int64_t reclaimedBytes = 0;    ///< of those
  std::vector<std::string> failures;  ///< names of those that were not
  std::vector<CleaningHistoryItem> items;
  std::optional<std::int64_t> observedAvailableBytesDelta;
  std::optional<UninstallHistoryContext> uninstallContext;
  bool isCleanupReceipt = false;  ///< written by the move journal, for one move

  bool operator==(const CleaningHistoryEntry&) const = default;
};
QV_JSON_FIELDS(CleaningHistoryEntry, id, date, source, itemCount, reclaimedBytes, failures, items,
               observedAvailableBytesDelta, uninstallContext, isCleanupReceipt)

/// Pretty-printed with sorted keys.
std::string jsonText(const CleaningHistoryEntry& entry);
std::string jsonText(const std::vector<CleaningHistoryEntry>& entries);

/// Reads one entry back, from any source.
Outcome<CleaningHistoryEntry, JsonError> cleaningHistoryEntryFromJson(std::string_view text);

}  // namespace quorvane
