#pragma once

#include "quorvane/removal/HistoryDocument.h"
#include "quorvane/removal/HistoryJournalFile.h"

#include <memory>
#include <optional>
#include <span>

namespace quorvane {

/// The decoded history as it was last read or written, and what the file was then. It outlives the lock: as long as the
/// file is provably the same one, it need not be read again.
struct HistoryCache {
  std::optional<FileStatus> file;  ///< none: nothing is kept
  HistoryDocument document;
};

/// The history under its lock, decoded. One at a time in all processes; belongs to one thread.
class OpenHistory {
 public:
  /// Takes the lock and reads what the cache does not hold. `cache` outlives the object.
  static Outcome<std::shared_ptr<OpenHistory>, RecoveryStoreError> open(FileSystem& fileSystem, RandomSource& random,
                                                                        const FilePath& fileURL, HistoryCache& cache);

  const HistoryDocument& document() const { return cache_.document; }
  const FilePath& fileURL() const { return journal_.fileURL(); }
  /// When it was last written, by its file; none while there is no file.
  std::optional<Date> writtenAt() const;

  /// What one write changes.
  struct Change {
    std::vector<CleaningHistoryEntry> inserted = {};  ///< at the front, in this order
    std::vector<CleaningHistoryEntry> replaced = {};  ///< by their identifiers
    std::vector<Uuid> erased = {};
    std::vector<int> changedFolders = {};  ///< open; what the change tells of them has to be on the disk before it is

    bool isEmpty() const { return inserted.empty() && replaced.empty() && erased.empty(); }
  };

  /// Applies a change and replaces the file with the result, in one write. An empty change only waits for its folders.
  /// Refused as untrusted when somebody who does not heed the lock took entries away that are to be changed, and as
  /// full when entries are to be inserted into a history that has no room for more. After a failure nothing of the
  /// change counts, though the file may hold it; it is read anew before anything else.
  Outcome<void, RecoveryStoreError> write(Change change);

 private:
  OpenHistory(FileSystem& fileSystem, HistoryJournalFile journal, HistoryCache& cache)
      : fileSystem_(fileSystem), journal_(std::move(journal)), cache_(cache) {}

  Outcome<void, RecoveryStoreError> load();
  Outcome<void, RecoveryStoreError> check(const Change& change);
  bool isFull() const;

  FileSystem& fileSystem_;
  HistoryJournalFile journal_;
  HistoryCache& cache_;
};

}  // namespace quorvane
