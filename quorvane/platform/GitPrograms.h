#pragma once

#include "quorvane/base/FilePath.h"

#include <optional>

namespace quorvane {

/// Where this system keeps git.
struct GitPrograms {
  FilePath gitURL{"/usr/bin/git"};
  /// Where git may be a stand-in that first offers to install itself: this program must succeed with "-p" before git is
  /// touched.
  std::optional<FilePath> developerTools;
};

}  // namespace quorvane
