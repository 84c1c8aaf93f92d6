#include "quorvane/core/FileIdentity.h"

#include <sys/stat.h>

namespace quorvane {

FileIdentity identityOf(const FileStatus& status) {
  return {.device = status.device,
          .inode = status.inode,
          .kind = status.kind,
          .createdSeconds = status.born.seconds,
          .createdNanoseconds = status.born.nanoseconds};
}

bool isFolder(const FileIdentity& identity) { return S_ISDIR(identity.kind); }

}  // namespace quorvane
