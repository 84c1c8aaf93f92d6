#pragma once

#include "quorvane/base/FilePath.h"

namespace quorvane {

/// How a path lies to a pattern in which a component "*" stands for any one component. Both standardised.
enum class PatternMatch {
  none,
  above,    ///< the pattern describes something below the path
  exactly,  ///< the pattern describes the path
  below,    ///< the path lies below something that the pattern describes
};

PatternMatch matched(const FilePath& path, const FilePath& pattern);

}  // namespace quorvane
