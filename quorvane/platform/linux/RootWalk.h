#pragma once

#include "quorvane/platform/FileSystem.h"

namespace quorvane {

/// Whether two objects lie on the same mount of the same volume: only then can one be renamed to the other's place.
bool isSameVolume(const FileStatus& one, const FileStatus& other);

/// A folder that was reached from the root.
struct WalkedFolder {
  FileDescriptor folder{};
  FileStatus status{};
  FilePath top{};  ///< where its mount begins; empty when that could not be seen
};

/// Opens an absolute path one component after the other, from the root, and follows no link (ELOOP). Folders on the way
/// that this user may pass but not read are passed by their path, which then has to be one without links.
Outcome<WalkedFolder, PosixError> walkFromRoot(FileSystem& fileSystem, const FilePath& path);

}  // namespace quorvane
