#pragma once

#include "quorvane/platform/FileSystem.h"
#include "quorvane/platform/RandomSource.h"
#include "quorvane/platform/Trash.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// A line of the file `directorysizes` in a Trash folder.
struct DirectorySize {
  std::string leaf{};            ///< of a folder in the Trash
  std::int64_t bytes = 0;        ///< it takes on the disk
  std::int64_t noteSeconds = 0;  ///< when its note was last modified, since 1970

  bool operator==(const DirectorySize&) const = default;
};

/// With its end of line.
std::string directorySizeLine(const DirectorySize& size);

/// Every line, or nothing when one of them is none.
std::optional<std::vector<DirectorySize>> directorySizesFromText(std::string_view text);

/// Replaces `directorysizes` in an open Trash folder, whose notes lie in `info`: adds these, keeps the lines whose note
/// is still there. A file that is not the user's own, or that cannot be understood, is left as it is.
void addDirectorySizes(FileSystem& fileSystem, RandomSource& random, int trash, int info,
                       const std::vector<TrashFolder::Size>& sizes);

}  // namespace quorvane
