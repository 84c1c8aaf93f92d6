#include "quorvane/scan/ScanPauseControl.h"

namespace quorvane {

void ScanPauseControl::pause() { enter(State::paused); }

void ScanPauseControl::resume() { enter(State::running); }

void ScanPauseControl::cancel() {
  stop_.requestStop();
  enter(State::cancelled);
}

ScanPauseControl::State ScanPauseControl::state() const {
  const MutexLock lock(lock_);
  return state_;
}

bool ScanPauseControl::waitWhilePaused() {
  MutexLock lock(lock_);
  while (state_ == State::paused) waiters_.wait(lock);
  return state_ == State::running;
}

void ScanPauseControl::enter(State state) {
  {
    const MutexLock lock(lock_);
    if (state_ != State::cancelled) state_ = state;
  }
  waiters_.notify_all();
}

}  // namespace quorvane
