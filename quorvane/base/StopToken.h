#pragma once

#include <atomic>
#include <memory>

namespace quorvane {

/// Tells long work that its result is no longer wanted. Copies share one state; any thread may ask.
class StopToken {
 public:
  /// A token that never asks for a stop.
  StopToken() = default;

  bool stopRequested() const { return state_ && state_->load(std::memory_order_relaxed); }

 private:
  friend class StopSource;
  explicit StopToken(std::shared_ptr<const std::atomic<bool>> state) : state_(std::move(state)) {}

  std::shared_ptr<const std::atomic<bool>> state_;
};

/// The other end of its tokens. Asking is final, and safe in a signal handler.
class StopSource {
 public:
  StopToken token() const { return StopToken(state_); }
  void requestStop() { state_->store(true, std::memory_order_relaxed); }
  bool stopRequested() const { return state_->load(std::memory_order_relaxed); }

 private:
  std::shared_ptr<std::atomic<bool>> state_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace quorvane
