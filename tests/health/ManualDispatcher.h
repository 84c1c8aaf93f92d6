#pragma once

#include "quorvane/base/Dispatcher.h"

#include <chrono>
#include <functional>
#include <map>
#include <utility>

namespace quorvane {

/// A main thread whose time passes by hand.
class ManualDispatcher final : public Dispatcher {
 public:
  void postAfter(std::chrono::milliseconds delay, std::function<void()> function) override {
    posted_.emplace(now_ + delay, std::move(function));
  }

  /// Runs what is due until then, in its order.
  void pass(std::chrono::milliseconds time) {
    const std::chrono::milliseconds end = now_ + time;
    while (!posted_.empty() && posted_.begin()->first <= end) {
      now_ = posted_.begin()->first;
      const auto function = std::move(posted_.begin()->second);
      posted_.erase(posted_.begin());
      function();
    }
    now_ = end;
  }

 private:
  std::chrono::milliseconds now_{0};
  std::multimap<std::chrono::milliseconds, std::function<void()>> posted_;
};

}  // namespace quorvane
