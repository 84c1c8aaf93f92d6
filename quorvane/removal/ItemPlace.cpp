#include "quorvane/removal/ItemPlace.h"

#include <cerrno>

namespace quorvane {

Outcome<ItemPlace, PosixError> placeOf(FileSystem& fileSystem, const FilePath& path) {
  const bool canHaveFolder = isAbsolute(path.bytes) && path == standardised(path) && path.bytes != "/";
  if (!canHaveFolder) return failure(PosixError{EINVAL});
  auto folder = fileSystem.openStartingFolder({"/"});
  const FilePath above = parentOf(path);
  if (folder && above.bytes != "/")
    folder = openFolderBelow(fileSystem, folder->number(), std::string_view(above.bytes).substr(1));
  if (!folder) return failure(folder.error());
  return ItemPlace{*std::move(folder), std::string(leafOf(path))};
}

Outcome<FileIdentity, PosixError> identityAt(FileSystem& fileSystem, const ItemPlace& place) {
  const auto status = fileSystem.status(place.folder.number(), place.name.c_str());
  if (!status) return failure(status.error());
  return identityOf(*status);
}

Outcome<FileIdentity, PosixError> readIdentity(FileSystem& fileSystem, const FilePath& path) {
  const auto place = placeOf(fileSystem, path);
  if (!place) return failure(place.error());
  return identityAt(fileSystem, *place);
}

}  // namespace quorvane
