#include "quorvane/core/SupportFolder.h"

namespace quorvane {

namespace {

Outcome<FileDescriptor, PosixError> made(FileSystem& fileSystem, const FilePath& path) {
  FilePath existing = standardised(path);
  const FilePath wanted = existing;
  auto opened = fileSystem.openStartingFolder(existing);
  while (!opened && opened.error().isMissing() && existing.bytes != "/") {
    existing = parentOf(existing);
    opened = fileSystem.openStartingFolder(existing);
  }
  if (!opened || existing == wanted) return opened;
  return makeFoldersBelow(fileSystem, opened->number(), relativeTo(existing, wanted));
}

Outcome<FileDescriptor, TrustError> trusted(FileSystem& fileSystem, Outcome<FileDescriptor, PosixError> folder) {
  if (!folder && folder.error().isMissing()) return failure(TrustError{TrustFault::missing, folder.error()});
  if (!folder) return failure(TrustError{TrustFault::unreadable, folder.error()});
  const auto status = fileSystem.status(folder->number());
  if (!status) return failure(TrustError{TrustFault::unreadable, status.error()});
  if (const auto fault = faultOfFolder(*status)) return failure(TrustError{*fault, {}});
  return *std::move(folder);
}

}  // namespace

Outcome<FileDescriptor, TrustError> openSupportFolder(FileSystem& fileSystem, const FilePath& path) {
  return trusted(fileSystem, fileSystem.openStartingFolder(path));
}

Outcome<FileDescriptor, TrustError> makeSupportFolder(FileSystem& fileSystem, const FilePath& path) {
  return trusted(fileSystem, made(fileSystem, path));
}

}  // namespace quorvane
