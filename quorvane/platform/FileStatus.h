#pragma once

#include "quorvane/base/Date.h"

#include <cstdint>

namespace quorvane {

/// A moment as the file system stores it.
struct FileTime {
  std::int64_t seconds = 0;      ///< since 1970; any value is possible
  std::int64_t nanoseconds = 0;  ///< 0 to 999,999,999

  auto operator<=>(const FileTime&) const = default;

  Date date() const { return dateFromTimestamp(seconds, nanoseconds); }
};

/// What the file system says of one object. Links are described themselves, never followed.
struct FileStatus {
  std::int32_t device = 0;
  std::uint64_t inode = 0;
  std::uint16_t kind = 0;         ///< the file-type bits of the mode (S_IFMT)
  std::uint16_t permissions = 0;  ///< the other bits of the mode
  std::uint64_t linkCount = 0;
  std::uint32_t owner = 0;
  std::uint32_t group = 0;
  std::int64_t size = 0;       ///< bytes of its content
  std::int64_t allocated = 0;  ///< bytes it takes on the disk
  FileTime born;               ///< 0/0 where the file system keeps no birth time
  FileTime modified;
  FileTime changed;
  std::uint64_t mount = 0;  ///< tells mounts apart, also two mounts of one volume; 0 where the system does not say

  bool operator==(const FileStatus&) const = default;

  bool isFolder() const;
  bool isRegularFile() const;
  bool isLink() const;
};

}  // namespace quorvane
