#pragma once

#include "quorvane/base/JsonRecord.h"
#include "quorvane/platform/FileStatus.h"

#include <cstdint>

namespace quorvane {

/// Which object of the file system something is, links not followed. A rename keeps all five fields; another object in
/// the same place differs at least in the inode or the birth time.
struct FileIdentity {
  std::int32_t device = 0;
  std::uint64_t inode = 0;
  std::uint16_t kind = 0;  ///< the file-type bits of the mode
  std::int64_t createdSeconds = 0;
  std::int64_t createdNanoseconds = 0;

  bool operator==(const FileIdentity&) const = default;
};
QV_JSON_FIELDS(FileIdentity, device, inode, kind, createdSeconds, createdNanoseconds)

FileIdentity identityOf(const FileStatus& status);

bool isFolder(const FileIdentity& identity);

}  // namespace quorvane
