#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/core/IgnoreRule.h"
#include "quorvane/core/ScanCoverage.h"
#include "quorvane/scan/CloudScope.h"
#include "quorvane/scan/DiskScanner.h"

#include <optional>
#include <vector>

namespace quorvane {

/// What one scan may look at, told by canonical paths.
struct ScanScope {
  std::vector<IgnoreRule> scanIgnoreRules;
  CloudScope scanCloudScope;
  FilePath ownData;                   ///< the program's own state
  std::vector<FilePath> mountPoints;  ///< sorted

  /// Why no item may be made of this place; nothing when it may. A place with something inside that is out of bounds is
  /// so itself: removing it would take that along.
  std::optional<ScanCoverageReason> reasonToSkip(const FilePath& canonicalPath) const;
};

/// The scope as it is now. Ignore rules that cannot be read leave nothing out, and a notice behind.
ScanScope scanScope(const ScanServices& services, const ScanSettings& settings, std::vector<ScanCoverageNote>& notices);

}  // namespace quorvane
