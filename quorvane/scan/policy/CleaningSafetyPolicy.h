#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/scan/policy/CleaningRules.h"

namespace quorvane {

/// Decides whether a location may be cleaned at all, whatever was found there. The last gate before a move, and the
/// condition for starting selected.
class CleaningSafetyPolicy {
 public:
  /// Resolves the rules' own folders now; one that cannot be resolved is no cleaning root.
  CleaningSafetyPolicy(FileSystem& fileSystem, CleaningRules rules);

  /// Whether an absolute path lies inside a cleaning root, holds no protected folder and is not in one. Its resolved
  /// form has to pass, so a link out of a root does not; a path whose links cannot be resolved never does.
  bool allowsCleaning(const FilePath& location) const;

  /// The same of a location whose resolved form is known.
  bool allowsCleaning(const FilePath& location, const FilePath& resolved) const;

 private:
  FileSystem& fileSystem_;
  CleaningRules rules_;
  CleaningRules resolvedRules_;
};

}  // namespace quorvane
