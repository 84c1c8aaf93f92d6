#include "quorvane/removal/OpenHistory.h"

#include "quorvane/platform/FolderSync.h"

#include <algorithm>

namespace quorvane {

Outcome<std::shared_ptr<OpenHistory>, RecoveryStoreError> OpenHistory::open(FileSystem& fileSystem,
                                                                            RandomSource& random,
                                                                            const FilePath& fileURL,
                                                                            HistoryCache& cache) {
  auto journal = HistoryJournalFile::open(fileSystem, random, fileURL);
  if (!journal) return failure(journal.error());
  std::shared_ptr<OpenHistory> history(new OpenHistory(fileSystem, *std::move(journal), cache));
  if (auto loaded = history->load(); !loaded) return failure(loaded.error());
  return history;
}

Outcome<void, RecoveryStoreError> OpenHistory::load() {
  const std::optional<FileStatus> file = journal_.status();
  if (file && file == cache_.file) return {};
  cache_ = {};
  const auto text = journal_.read();
  if (!text) return failure(text.error());
  if (*text) {
    auto document = HistoryDocument::decode(**text);
    if (!document) return failure(RecoveryStoreError{RecoveryStoreFault::undecodable, journal_.fileURL(), {}});
    cache_.document = *std::move(document);
  }
  cache_.file = file;
  return {};
}

std::optional<Date> OpenHistory::writtenAt() const {
  return cache_.file ? std::optional(cache_.file->modified.date()) : std::nullopt;
}

bool OpenHistory::isFull() const {
  std::size_t size = 0;
  for (const std::string_view piece : cache_.document.pieces()) size += piece.size();
  return size >= HistoryJournalFile::fullFile;
}

Outcome<void, RecoveryStoreError> OpenHistory::check(const Change& change) {
  if (change.isEmpty()) return {};
  // Untouched since it was loaded, unless a write failed: then what the file holds now is not known.
  if (auto loaded = load(); !loaded) return loaded;
  const auto holds = [&](const Uuid& entry) { return document().holdsEntry(entry); };
  const bool isOurs = std::ranges::all_of(change.erased, holds) &&
                      std::ranges::all_of(change.replaced, holds, &CleaningHistoryEntry::id);
  if (!isOurs) return failure(RecoveryStoreError{RecoveryStoreFault::untrusted, journal_.fileURL(), {}});
  if (!change.inserted.empty() && isFull())
    return failure(RecoveryStoreError{RecoveryStoreFault::full, journal_.fileURL(), {}});
  return {};
}

Outcome<void, RecoveryStoreError> OpenHistory::write(Change change) {
  // First of all, since a folder that cannot be brought to the disk tells so only once: to whoever writes the change.
  if (auto applicable = check(change); !applicable) return applicable;
  FolderSync folders(fileSystem_, change.changedFolders);
  const auto foldersAreDurable = [&] { return folders.wait(); };
  if (change.isEmpty()) {
    if (const auto done = folders.wait(); !done)
      return failure(RecoveryStoreError{RecoveryStoreFault::notWritten, journal_.fileURL(), done.error()});
    return {};
  }
  HistoryDocument& document = cache_.document;
  for (const Uuid& entry : change.erased) document.erase(entry);
  for (CleaningHistoryEntry& entry : change.replaced) document.replace(std::move(entry));
  document.insertFront(std::move(change.inserted));
  const auto written = journal_.write(document.pieces(), foldersAreDurable);
  cache_.file = written ? journal_.status() : std::nullopt;
  return written;
}

}  // namespace quorvane
