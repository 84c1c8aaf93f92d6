#pragma once

#include "quorvane/base/StopToken.h"
#include "quorvane/base/ThreadAnnotations.h"

#include <condition_variable>

namespace quorvane {

/// Lets one thread pause, resume and cancel the scan that runs on another. Cancelling is final.
class ScanPauseControl {
 public:
  enum class State { running, paused, cancelled };

  void pause();
  void resume();
  void cancel();

  State state() const;

  /// The suspension point of the scan: returns true at once while running, waits while paused, and returns false once
  /// cancelled.
  bool waitWhilePaused();

  /// Asks for a stop once the scan is cancelled: for work that cannot come to a suspension point soon.
  StopToken stopToken() const { return stop_.token(); }

 private:
  void enter(State state);

  mutable Mutex lock_;
  std::condition_variable_any waiters_;
  State state_ QV_GUARDED_BY(lock_) = State::running;
  StopSource stop_;
};

}  // namespace quorvane
