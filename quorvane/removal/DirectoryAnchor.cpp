#include "quorvane/removal/DirectoryAnchor.h"

namespace quorvane {

namespace {

FileIdentity withoutDevice(FileIdentity identity) {
  identity.device = 0;
  return identity;
}

CleanupDirectoryAnchor withoutDevice(CleanupDirectoryAnchor anchor) {
  anchor.identity.device = 0;
  return anchor;
}

}  // namespace

std::optional<CleanupDirectoryAnchor> anchorOf(FileSystem& fileSystem, Volumes& volumes, int folder,
                                               const FilePath& path) {
  const auto status = fileSystem.status(folder);
  if (!status || !status->isFolder() || faultOfFolder(*status)) return std::nullopt;
  const auto volume = volumes.identity(folder);
  if (!volume) return std::nullopt;
  return CleanupDirectoryAnchor{.originalPath = standardised(path),
                                .identity = identityOf(*status),
                                .fileSystemID0 = volume->fileSystemID[0],
                                .fileSystemID1 = volume->fileSystemID[1],
                                .volumeUUID = uuidText(volume->uuid),
                                .ownerUID = status->owner};
}

AnchorMatch matched(const CleanupDirectoryAnchor& recorded, const CleanupDirectoryAnchor& current) {
  if (recorded == current) return AnchorMatch::exact;
  return withoutDevice(recorded) == withoutDevice(current) ? AnchorMatch::renumbered : AnchorMatch::none;
}

bool isSameObject(const FileIdentity& recorded, const FileIdentity& current, AnchorMatch volume) {
  if (volume == AnchorMatch::renumbered) return withoutDevice(recorded) == withoutDevice(current);
  return recorded == current;
}

}  // namespace quorvane
