#pragma once

#include <signal.h>

namespace quorvane {

/// As long as it lives, its thread takes no signals from outside, and a thread that it starts meanwhile never will: so
/// the handlers of the main thread run on no other, which might use what the main thread is just taking down. Faults
/// stay with the thread that commits them.
class BlockedSignals {
 public:
  BlockedSignals();
  ~BlockedSignals();
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace quorvane
