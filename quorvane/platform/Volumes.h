#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/Uuid.h"
#include "quorvane/platform/PosixError.h"

#include <array>
#include <cstdint>
#include <vector>

namespace quorvane {

/// Which volume an object lies on.
struct VolumeIdentity {
  std::array<std::int32_t, 2> fileSystemID{};  ///< f_fsid
  Uuid uuid;  ///< of the file system; where it tells none, one made from type and f_fsid

  bool operator==(const VolumeIdentity&) const = default;
};

struct VolumeCapacity {
  std::int64_t total = 0;      ///< bytes
  std::int64_t available = 0;  ///< bytes that this user can still write

  bool operator==(const VolumeCapacity&) const = default;
};

class Volumes {
 public:
  virtual ~Volumes() = default;

  virtual Outcome<VolumeIdentity, PosixError> identity(int descriptor) = 0;
  virtual Outcome<VolumeCapacity, PosixError> capacity(const FilePath& path) = 0;

  /// Every mount point that this process sees, resolved, sorted.
  virtual Outcome<std::vector<FilePath>, PosixError> mountPoints() = 0;
};

}  // namespace quorvane
