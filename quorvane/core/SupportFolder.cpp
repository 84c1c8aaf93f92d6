#include "quorvane/core/SupportFolder.h"

namespace quorvane {

Outcome<FileDescriptor, PosixError> makeSupportFolder(FileSystem& fileSystem, const FilePath& path) {
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

}  // namespace quorvane
