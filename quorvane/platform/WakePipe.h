#pragma once

#include "quorvane/platform/FileDescriptor.h"

#include <string>

namespace quorvane {

/// Wakes whoever sleeps in `poll`: from any thread, and from a signal handler.
class WakePipe {
 public:
  /// Ends the program where no descriptor is left.
  WakePipe();

  /// Can be read from while there are bytes that were not taken.
  int descriptor() const { return reader_.number(); }

  /// Safe in a signal handler, and never waits: a byte too many is lost, and a full pipe wakes as well.
  void wake(char byte = 0) const noexcept;

  /// All that was written and not taken; never waits.
  std::string take() const;

 private:
  FileDescriptor reader_;
  FileDescriptor writer_;
};

}  // namespace quorvane
