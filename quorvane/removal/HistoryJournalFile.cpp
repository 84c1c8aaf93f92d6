#include "quorvane/removal/HistoryJournalFile.h"

#include "quorvane/core/SupportFolder.h"

#include <cerrno>
#include <utility>

namespace quorvane {

namespace {

std::unexpected<RecoveryStoreError> refused(RecoveryStoreFault fault, const FilePath& file, PosixError reason = {}) {
  return failure(RecoveryStoreError{fault, file, reason});
}

bool isRefusedBySystem(TrustFault fault) { return fault == TrustFault::missing || fault == TrustFault::unreadable; }

std::unexpected<RecoveryStoreError> folderRefused(const TrustError& error, const FilePath& folder) {
  const auto fault =
      isRefusedBySystem(error.fault) ? RecoveryStoreFault::unreadable : RecoveryStoreFault::untrustedFolder;
  return refused(fault, folder, error.reason);
}

std::unexpected<RecoveryStoreError> lockRefused(const TrustError& error, const FilePath& lock) {
  if (error.fault == TrustFault::busy) return refused(RecoveryStoreFault::busy, lock);
  const auto fault =
      isRefusedBySystem(error.fault) ? RecoveryStoreFault::unreadable : RecoveryStoreFault::untrustedLock;
  return refused(fault, lock, error.reason);
}

std::unexpected<RecoveryStoreError> fileRefused(const TrustError& error, const FilePath& file) {
  if (isRefusedBySystem(error.fault)) return refused(RecoveryStoreFault::unreadable, file, error.reason);
  const bool isTooLarge = error.fault == TrustFault::tooLarge;
  return refused(isTooLarge ? RecoveryStoreFault::tooLarge : RecoveryStoreFault::untrusted, file);
}

Outcome<std::optional<std::string>, RecoveryStoreError> readIn(FileSystem& fileSystem, int folder,
                                                               const FilePath& fileURL) {
  auto text = readTrusted(fileSystem, folder, std::string(leafOf(fileURL)), HistoryJournalFile::largestFile);
  if (text) return std::optional(*std::move(text));
  if (text.error().fault == TrustFault::missing) return std::optional<std::string>();
  return fileRefused(text.error(), fileURL);
}

}  // namespace

Outcome<HistoryJournalFile, RecoveryStoreError> HistoryJournalFile::open(FileSystem& fileSystem, RandomSource& random,
                                                                         const FilePath& fileURL) {
  HistoryJournalFile journal(fileSystem, random, fileURL);
  journal.name_ = leafOf(fileURL);
  auto folder = makeSupportFolder(fileSystem, parentOf(fileURL));
  if (!folder) return folderRefused(folder.error(), parentOf(fileURL));
  journal.directory_ = *std::move(folder);
  auto lease = lockTrusted(fileSystem, journal.directory_.number(), journal.name_ + ".lock");
  if (!lease) return lockRefused(lease.error(), {fileURL.bytes + ".lock"});
  journal.lease_ = *std::move(lease);
  removeAbandonedTemporaries(fileSystem, journal.directory_.number(), journal.name_);
  return journal;
}

Outcome<std::optional<std::string>, RecoveryStoreError> HistoryJournalFile::read() {
  return readIn(*fileSystem_, directory_.number(), fileURL_);
}

Outcome<void, RecoveryStoreError> HistoryJournalFile::write(
    std::span<const std::string_view> pieces, const std::function<Outcome<void, PosixError>()>& beforeRename) {
  std::size_t size = 0;
  for (const std::string_view piece : pieces) size += piece.size();
  if (size > largestFile) return refused(RecoveryStoreFault::tooLarge, fileURL_);
  if (!isStillLockedBy(*fileSystem_, lease_.number(), directory_.number(), name_ + ".lock"))
    return refused(RecoveryStoreFault::untrustedLock, {fileURL_.bytes + ".lock"});
  const auto written = replaceFile(*fileSystem_, directory_.number(), name_, pieces, random_->uuid(), beforeRename);
  if (!written) return refused(RecoveryStoreFault::notWritten, fileURL_, written.error());
  return {};
}

std::optional<FileStatus> HistoryJournalFile::status() {
  const auto status = fileSystem_->status(directory_.number(), name_.c_str());
  return status ? std::optional(*status) : std::nullopt;
}

Outcome<std::optional<std::string>, RecoveryStoreError> readHistoryFile(FileSystem& fileSystem,
                                                                        const FilePath& fileURL) {
  const auto folder = openSupportFolder(fileSystem, parentOf(fileURL));
  if (folder) return readIn(fileSystem, folder->number(), fileURL);
  if (folder.error().fault == TrustFault::missing) return std::optional<std::string>();
  return folderRefused(folder.error(), parentOf(fileURL));
}

}  // namespace quorvane
