#pragma once

#include "quorvane/platform/DurableFile.h"
#include "quorvane/platform/Volumes.h"
#include "quorvane/removal/CleanupMoveIntent.h"

#include <optional>

namespace quorvane {

/// The anchor of an open folder that only the effective user may own and write to; nothing for any other, and where its
/// volume does not tell what it is.
std::optional<CleanupDirectoryAnchor> anchorOf(FileSystem& fileSystem, Volumes& volumes, int folder,
                                               const FilePath& path);

/// How a recorded folder relates to the one that stands in its place now.
enum class AnchorMatch {
  none,        ///< another folder, or another volume
  exact,       ///< the same in every field
  renumbered,  ///< the same folder of the same volume, which got another device number since: the system was started
               ///< anew in between
};

AnchorMatch matched(const CleanupDirectoryAnchor& recorded, const CleanupDirectoryAnchor& current);

/// Whether an object is the recorded one. Where the folder's volume is proven to be the same under another device
/// number, that number does not count.
bool isSameObject(const FileIdentity& recorded, const FileIdentity& current, AnchorMatch volume);

}  // namespace quorvane
