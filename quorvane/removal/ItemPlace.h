#pragma once

#include "quorvane/core/FileIdentity.h"
#include "quorvane/platform/FileSystem.h"

#include <string>

namespace quorvane {

/// Where an item stands: an open folder and a name in it.
struct ItemPlace {
  FileDescriptor folder;
  std::string name;
};

/// Opens the folder of a path from the root on, one component after the other, following no link: what the path means
/// at this moment, provided no link is on the way. EINVAL for a path that is not absolute and standardised, and for
/// "/".
Outcome<ItemPlace, PosixError> placeOf(FileSystem& fileSystem, const FilePath& path);

/// What stands at a place.
Outcome<FileIdentity, PosixError> identityAt(FileSystem& fileSystem, const ItemPlace& place);

/// Whether an object is the one that was proved, and nobody changed the object itself since. Of an object with several
/// names the status-change time does not count, since moving one of them changes it for all.
bool isUnchanged(const FileStatus& proven, const FileStatus& now);

/// What stands at a path, links not followed at any level.
Outcome<FileIdentity, PosixError> readIdentity(FileSystem& fileSystem, const FilePath& path);

}  // namespace quorvane
