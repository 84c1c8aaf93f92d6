#pragma once

#include "quorvane/base/Dispatcher.h"
#include "quorvane/base/ThreadAnnotations.h"
#include "quorvane/platform/WakePipe.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace quorvane {

/// The main thread of a face without a desktop: runs posted functions one after the other, on the thread that calls
/// `run`, in the order of the times they are due and otherwise in the order they were posted.
class MainLoop final : public Dispatcher {
 public:
  void postAfter(std::chrono::milliseconds delay, std::function<void()> function) override;

  /// Runs what is posted until a function among it calls `stop`; sleeps in between. What is not due then stays.
  void run();

  /// Ends `run` after the function that is running. From any thread.
  void stop();

  /// What `run` does next, before any posted function, once `interrupt` was called. Set before `run`.
  void setInterruptHandler(std::function<void()> handler) { interruptHandler_ = std::move(handler); }

  /// Calls `readable` whenever there is something to read from the descriptor, its end or an error, and nothing posted
  /// is due. On the thread of the loop, as `unwatch` is.
  void watch(int descriptor, std::function<void()> readable) { watched_[descriptor] = std::move(readable); }
  void unwatch(int descriptor) { watched_.erase(descriptor); }

  /// Wakes the loop to its interrupt handler; one that does not run is interrupted when it does. Safe in a signal
  /// handler.
  void interrupt() noexcept;

  /// Whether it was interrupted and the handler does not know yet.
  bool isInterrupted() const { return isInterrupted_; }

 private:
  using Time = std::chrono::steady_clock::time_point;

  void sleep(std::optional<Time> until);
  void tellReadable(int descriptor);
  std::function<void()> takeDue();
  std::optional<Time> nextDue();

  WakePipe pipe_;
  std::function<void()> interruptHandler_;
  std::map<int, std::function<void()>> watched_;
  std::atomic<bool> isInterrupted_{false};
  std::atomic<bool> isStopped_{false};

  Mutex mutex_;
  std::multimap<Time, std::function<void()>> posted_ QV_GUARDED_BY(mutex_);
};

}  // namespace quorvane
