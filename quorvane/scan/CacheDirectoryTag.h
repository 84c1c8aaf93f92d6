#pragma once

#include "quorvane/platform/FileSystem.h"

#include <array>
#include <string_view>

namespace quorvane {

/// Whether an open folder carries a valid cache directory tag: a regular file "CACHEDIR.TAG" that begins with the
/// signature of bford.info/cachedir. Whoever made it says that the folder
/// holds nothing that cannot be made again.
bool hasCacheDirectoryTag(FileSystem& fileSystem, int folder);

/// What version control systems keep in the top folder of a working copy.
inline constexpr std::array<std::string_view, 5> repositoryNames = {".git", ".hg", ".svn", ".jj", ".bzr"};

/// Whether an open folder is the working copy of a version control system. A tag there keeps somebody's work out of
/// backups; it does not make it disposable.
bool isWorkingCopy(FileSystem& fileSystem, int folder);

}  // namespace quorvane
