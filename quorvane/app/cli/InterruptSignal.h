#pragma once

#include "quorvane/app/model/MainLoop.h"

#include <csignal>

namespace quorvane {

/// As long as it lives, the first Ctrl-C interrupts the loop instead of ending the process; the second one ends it. A
/// process that was started to overlook Ctrl-C goes on doing so. One at a time.
class InterruptSignal {
 public:
  explicit InterruptSignal(MainLoop& loop);
  ~InterruptSignal();
  InterruptSignal(const InterruptSignal&) = delete;
  InterruptSignal& operator=(const InterruptSignal&) = delete;

 private:
  struct sigaction before_ {};
};

}  // namespace quorvane
