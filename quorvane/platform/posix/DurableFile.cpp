#include "quorvane/platform/DurableFile.h"

#include <algorithm>
#include <cerrno>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

namespace {

Outcome<void, PosixError> writeAndRename(FileSystem& fileSystem, int folder, const FileDescriptor& file,
                                         const std::string& temporary, const std::string& name,
                                         std::span<const std::string_view> pieces,
                                         const std::function<Outcome<void, PosixError>()>& beforeRename) {
  auto done = writeWhole(fileSystem, file.number(), pieces);
  if (done) done = fileSystem.synchronise(file.number());
  if (done && beforeRename) done = beforeRename();
  if (done) done = fileSystem.renameReplacing(folder, temporary.c_str(), folder, name.c_str());
  return done;
}

std::string temporaryPrefix(const std::string& name) { return name + ".writing-"; }

std::unexpected<TrustError> distrusted(TrustFault fault, PosixError reason = {}) {
  return failure(TrustError{fault, reason});
}

TrustError whyNotOpened(PosixError reason) {
  if (reason.isMissing()) return {TrustFault::missing, reason};
  const bool isLink = reason.code == ELOOP, isDeviceOrSocket = reason.code == ENXIO;
  if (isLink || isDeviceOrSocket) return {TrustFault::notRegularFile, {}};
  return {TrustFault::unreadable, reason};
}

bool isWritableByOthers(const FileStatus& status) { return (status.permissions & (S_IWGRP | S_IWOTH)) != 0; }

std::optional<TrustFault> faultOfFile(const FileStatus& status, std::size_t limit) {
  if (!status.isRegularFile()) return TrustFault::notRegularFile;
  if (status.owner != ::geteuid()) return TrustFault::foreignOwner;
  // No link at all is well: the file was replaced after it was opened, and holds the old content as a whole.
  if (status.linkCount > 1) return TrustFault::severalLinks;
  if (isWritableByOthers(status)) return TrustFault::writableByOthers;
  if (status.size < 0 || static_cast<std::uint64_t>(status.size) > limit) return TrustFault::tooLarge;
  return std::nullopt;
}

}  // namespace

Outcome<void, PosixError> replaceFile(FileSystem& fileSystem, int folder, const std::string& name,
                                      std::span<const std::string_view> pieces, const Uuid& identifier,
                                      const std::function<Outcome<void, PosixError>()>& beforeRename) {
  const std::string temporary = temporaryPrefix(name) + uuidText(identifier);
  const auto file = fileSystem.createFile(folder, temporary.c_str());
  if (!file) return failure(file.error());
  if (auto done = writeAndRename(fileSystem, folder, *file, temporary, name, pieces, beforeRename); !done) {
    (void)fileSystem.removeFile(folder, temporary.c_str());  // what failed first is what the caller is told
    return done;
  }
  return fileSystem.synchronise(folder);
}

Outcome<void, PosixError> replaceFile(FileSystem& fileSystem, int folder, const std::string& name,
                                      std::string_view bytes, const Uuid& identifier) {
  return replaceFile(fileSystem, folder, name, std::span(&bytes, 1), identifier);
}

void removeAbandonedTemporaries(FileSystem& fileSystem, int folder, const std::string& name) {
  FolderListing listing;
  if (!fileSystem.list(folder, listing)) return;
  const std::string prefix = temporaryPrefix(name);
  for (const FolderEntry& entry : listing.entries()) {
    const std::string_view found = listing.nameOf(entry);
    const bool isOurs = entry.status.isRegularFile() && entry.status.owner == ::geteuid();
    if (isOurs && found.starts_with(prefix) && uuidFromText(found.substr(prefix.size())))
      (void)fileSystem.removeFile(folder, std::string(found).c_str());
  }
}

std::optional<TrustFault> faultOfFolder(const FileStatus& folder) {
  if (folder.owner != ::geteuid()) return TrustFault::foreignOwner;
  if (isWritableByOthers(folder)) return TrustFault::writableByOthers;
  return std::nullopt;
}

Outcome<FileDescriptor, TrustError> lockTrusted(FileSystem& fileSystem, int folder, const std::string& name) {
  auto lock = fileSystem.lockFile(folder, name.c_str());
  if (!lock && lock.error().code == EWOULDBLOCK) return distrusted(TrustFault::busy);
  if (!lock) return failure(whyNotOpened(lock.error()));
  const auto status = fileSystem.status(lock->number());
  if (!status) return distrusted(TrustFault::unreadable, status.error());
  if (const auto fault = faultOfFile(*status, 0)) return distrusted(*fault);
  if (!isStillLockedBy(fileSystem, lock->number(), folder, name)) return distrusted(TrustFault::busy);
  return *std::move(lock);
}

bool isStillLockedBy(FileSystem& fileSystem, int lock, int folder, const std::string& name) {
  const auto held = fileSystem.status(lock), named = fileSystem.status(folder, name.c_str());
  return held && named && held->linkCount == 1 && held->inode == named->inode && held->device == named->device;
}

Outcome<std::string, TrustError> readTrusted(FileSystem& fileSystem, int folder, const std::string& name,
                                             std::size_t limit) {
  const auto file = fileSystem.openFile(folder, name.c_str());
  if (!file) return failure(whyNotOpened(file.error()));
  const auto status = fileSystem.status(file->number());
  if (!status) return distrusted(TrustFault::unreadable, status.error());
  if (const auto fault = faultOfFile(*status, limit)) return distrusted(*fault);
  auto content = readToEnd(fileSystem, file->number(), limit);
  if (content) return std::move(*content);
  if (content.error().code == EFBIG) return distrusted(TrustFault::tooLarge);
  return distrusted(TrustFault::unreadable, content.error());
}

}  // namespace quorvane
