#pragma once

#include "quorvane/base/Outcome.h"

#include <compare>

namespace quorvane {

/// The operating system's own reason for a refusal: an `errno` number.
struct PosixError {
  int code = 0;

  auto operator<=>(const PosixError&) const = default;

  /// Nothing stands at the path: the only reason that means "missing".
  bool isMissing() const;
  /// The system does not let this user do it.
  bool isDenied() const;
  /// A link stands where something else should.
  bool isLink() const;
  /// A link or another object stands where a folder should.
  bool isOtherKind() const;
  /// Somebody asked for a stop.
  bool isCancelled() const;
};

/// What is said of a link that must not be followed.
PosixError linkError();

/// What a stopped operation fails with.
PosixError cancelledError();

/// The reason the last system call of this thread failed.
PosixError lastPosixError();

}  // namespace quorvane
