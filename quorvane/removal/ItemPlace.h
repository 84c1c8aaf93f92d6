#pragma once

#include "quorvane/core/FileIdentity.h"
#include "quorvane/platform/FileSystem.h"

#include <memory>
#include <string>

namespace quorvane {

/// Where an item stands: an open folder and a name in it.
struct ItemPlace {
  std::shared_ptr<const FileDescriptor> folder;
  std::string name;
};

/// Opens the folder of a path from the root on, one component after the other, following no link: what the path means
/// at this moment, provided no link is on the way. EINVAL for a path that is not absolute and standardised, and for
/// "/".
Outcome<ItemPlace, PosixError> placeOf(FileSystem& fileSystem, const FilePath& path);

/// The places of paths that are looked at together: of those that follow each other in one folder, the folder is opened
/// for the first.
class ItemPlaces {
 public:
  explicit ItemPlaces(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  /// As `placeOf`, though the folder may be what the path of it meant a moment ago.
  Outcome<ItemPlace, PosixError> at(const FilePath& path);

 private:
  FileSystem& fileSystem_;
  FilePath folderPath_;
  std::shared_ptr<const FileDescriptor> folder_;
};

/// What stands at a place.
Outcome<FileIdentity, PosixError> identityAt(FileSystem& fileSystem, const ItemPlace& place);

/// Whether an object is the one that was proved, and nobody changed the object itself since. Of an object with several
/// names the status-change time does not count, since moving one of them changes it for all.
bool isUnchanged(const FileStatus& proven, const FileStatus& now);

/// What stands at a path, links not followed at any level.
Outcome<FileIdentity, PosixError> readIdentity(FileSystem& fileSystem, const FilePath& path);

}  // namespace quorvane
