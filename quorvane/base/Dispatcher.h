#pragma once

#include <chrono>
#include <functional>

namespace quorvane {

/// Runs functions later, one after the other, on the thread that owns it: the main thread of a face.
class Dispatcher {
 public:
  virtual ~Dispatcher() = default;

  /// Runs `function` on the owning thread, not before `delay` has passed. Callable from any thread; never waits.
  virtual void postAfter(std::chrono::milliseconds delay, std::function<void()> function) = 0;

  void post(std::function<void()> function) { postAfter(std::chrono::milliseconds(0), std::move(function)); }
};

}  // namespace quorvane
