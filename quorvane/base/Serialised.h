#pragma once

#include "quorvane/base/ThreadAnnotations.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <thread>
#include <utility>

namespace quorvane {

/// A service with a thread of its own: operations run there one at a time, in the order they were handed over.
///
/// Destroying it lets the operations that were handed over finish first, and waits for them.
template <class Service>
class Serialised {
 public:
  template <class... Arguments>
  explicit Serialised(Arguments&&... arguments)
      : service_(std::forward<Arguments>(arguments)...), thread_([this] { run(); }) {}

  ~Serialised() {
    {
      const MutexLock lock(mutex_);
      closing_ = true;
    }
    changed_.notify_one();
    thread_.join();
  }

  Serialised(const Serialised&) = delete;
  Serialised& operator=(const Serialised&) = delete;

  /// Queues an operation; returns at once. Callable from any thread.
  void perform(std::function<void(Service&)> operation) {
    {
      const MutexLock lock(mutex_);
      operations_.push_back(std::move(operation));
    }
    changed_.notify_one();
  }

 private:
  void run() {
    while (auto operation = next()) operation(service_);
  }

  /// Waits for an operation; an empty one means that no more will come.
  std::function<void(Service&)> next() {
    MutexLock lock(mutex_);
    while (operations_.empty() && !closing_) changed_.wait(lock);
    if (operations_.empty()) return nullptr;
    auto operation = std::move(operations_.front());
    operations_.pop_front();
    return operation;
  }

  Service service_;
  Mutex mutex_;
  std::condition_variable_any changed_;
  std::deque<std::function<void(Service&)>> operations_ QV_GUARDED_BY(mutex_);
  bool closing_ QV_GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace quorvane
