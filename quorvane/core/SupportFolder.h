#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/Outcome.h"
#include "quorvane/platform/DurableFile.h"

namespace quorvane {

/// Opens the folder in which the program keeps its own state, at an absolute path. Links are followed, since the person
/// or the environment named the path; where they lead, only the effective user may own it and write to it.
Outcome<FileDescriptor, TrustError> openSupportFolder(FileSystem& fileSystem, const FilePath& path);

/// The same, making what is missing of it with permissions 0700, each made durable in its parent. No link is followed
/// or made where something is missing. What was made before a failure stays, empty.
Outcome<FileDescriptor, TrustError> makeSupportFolder(FileSystem& fileSystem, const FilePath& path);

}  // namespace quorvane
