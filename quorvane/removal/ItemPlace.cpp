#include "quorvane/removal/ItemPlace.h"

#include <cerrno>
#include <tuple>

namespace quorvane {

Outcome<ItemPlace, PosixError> placeOf(FileSystem& fileSystem, const FilePath& path) {
  return ItemPlaces(fileSystem).at(path);
}

Outcome<ItemPlace, PosixError> ItemPlaces::at(const FilePath& path) {
  const bool canHaveFolder = isAbsolute(path.bytes) && path == standardised(path) && path.bytes != "/";
  if (!canHaveFolder) return failure(PosixError{EINVAL});
  FilePath folderPath = parentOf(path);
  if (!folder_ || folderPath != folderPath_) {
    auto folder = fileSystem_.openRealFolder(folderPath);
    if (!folder) return failure(folder.error());
    folder_ = std::make_shared<const FileDescriptor>(*std::move(folder));
    folderPath_ = std::move(folderPath);
  }
  return ItemPlace{folder_, std::string(leafOf(path))};
}

Outcome<FileIdentity, PosixError> identityAt(FileSystem& fileSystem, const ItemPlace& place) {
  const auto status = fileSystem.status(place.folder->number(), place.name.c_str());
  if (!status) return failure(status.error());
  return identityOf(*status);
}

bool isUnchanged(const FileStatus& proven, const FileStatus& now) {
  const auto content = [](const FileStatus& status) {
    return std::tuple(status.size, status.modified, status.permissions, status.owner, status.group);
  };
  const bool hasOneName = proven.isFolder() || (proven.linkCount == 1 && now.linkCount == 1);
  return identityOf(proven) == identityOf(now) && content(proven) == content(now) &&
         (!hasOneName || proven.changed == now.changed);
}

Outcome<FileIdentity, PosixError> readIdentity(FileSystem& fileSystem, const FilePath& path) {
  const auto place = placeOf(fileSystem, path);
  if (!place) return failure(place.error());
  return identityAt(fileSystem, *place);
}

}  // namespace quorvane
