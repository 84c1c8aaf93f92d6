#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/Outcome.h"
#include "quorvane/platform/FileSystem.h"

namespace quorvane {

/// Opens the folder at an absolute path, making what is missing of it with permissions 0700, each made durable in its
/// parent. Links among the folders that exist are followed, since the person or the environment named the path; no link
/// is followed or made where something is missing. What was made before a failure stays, empty.
Outcome<FileDescriptor, PosixError> makeSupportFolder(FileSystem& fileSystem, const FilePath& path);

}  // namespace quorvane
