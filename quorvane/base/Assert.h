#pragma once

#include <source_location>

namespace quorvane {

/// Ends the process at once, after a line on standard error: the program has broken its own rules.
[[noreturn]] void abortOnBrokenInvariant(const char* what, std::source_location where);

/// Holds in every build. Not for input: what comes from outside fails with a typed reason instead.
inline void require(bool holds, const char* what, std::source_location where = std::source_location::current()) {
  if (!holds) abortOnBrokenInvariant(what, where);
}

}  // namespace quorvane
