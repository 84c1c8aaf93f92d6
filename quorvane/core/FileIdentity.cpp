#include "quorvane/core/FileIdentity.h"

namespace quorvane {

FileIdentity identityOf(const FileStatus& status) {
  return {.device = status.device,
          .inode = status.inode,
          .kind = status.kind,
          .createdSeconds = status.born.seconds,
          .createdNanoseconds = status.born.nanoseconds};
}

}  // namespace quorvane
