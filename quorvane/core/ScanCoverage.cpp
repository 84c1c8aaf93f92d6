#include "quorvane/core/ScanCoverage.h"

namespace quorvane {

void ScanCoverageEntry::addUnreadable(const FilePath& unreadable) {
  constexpr std::size_t mostPaths = 1000;
  if (unreadablePaths.size() < mostPaths) unreadablePaths.push_back(unreadable);
}

}  // namespace quorvane
