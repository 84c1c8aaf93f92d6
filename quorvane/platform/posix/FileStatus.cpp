#include "quorvane/platform/FileStatus.h"

#include <sys/stat.h>

namespace quorvane {

bool FileStatus::isFolder() const { return kind == S_IFDIR; }

bool FileStatus::isRegularFile() const { return kind == S_IFREG; }

bool FileStatus::isLink() const { return kind == S_IFLNK; }

}  // namespace quorvane
