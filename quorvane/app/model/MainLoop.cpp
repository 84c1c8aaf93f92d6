#include "quorvane/app/model/MainLoop.h"

#include <algorithm>
#include <limits>
#include <span>
#include <vector>

#include <poll.h>

namespace quorvane {

static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may touch only what takes no lock");

void MainLoop::postAfter(std::chrono::milliseconds delay, std::function<void()> function) {
  const Time due = std::chrono::steady_clock::now() + delay;
  {
    const MutexLock lock(mutex_);
    posted_.emplace(due, std::move(function));
  }
  pipe_.wake();
}

void MainLoop::run() {
  isStopped_ = false;
  while (!isStopped_) {
    if (isInterrupted_.exchange(false) && interruptHandler_) {
      interruptHandler_();
    } else if (const auto function = takeDue()) {
      function();
    } else {
      sleep(nextDue());
    }
  }
}

void MainLoop::stop() {
  isStopped_ = true;
  pipe_.wake();
}

void MainLoop::interrupt() noexcept {
  isInterrupted_ = true;
  pipe_.wake();
}

void MainLoop::sleep(std::optional<Time> until) {
  int milliseconds = -1;
  if (until) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*until - std::chrono::steady_clock::now()).count();
    milliseconds = static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
  }
  std::vector<pollfd> waiting{{pipe_.descriptor(), POLLIN, 0}};
  waiting.reserve(watched_.size() + 1);
  for (const auto& [descriptor, readable] : watched_) waiting.push_back({descriptor, POLLIN, 0});
  const int readyCount = ::poll(waiting.data(), waiting.size(), milliseconds);
  pipe_.take();
  if (readyCount <= 0) return;
  for (const pollfd& each : std::span(waiting).subspan(1))
    if (each.revents != 0) tellReadable(each.fd);
}

// The handler before may have ended the watch, and the handler itself may.
void MainLoop::tellReadable(int descriptor) {
  const auto found = watched_.find(descriptor);
  if (found == watched_.end()) return;
  const auto readable = found->second;
  readable();
}

std::function<void()> MainLoop::takeDue() {
  const MutexLock lock(mutex_);
  const auto first = posted_.begin();
  if (first == posted_.end() || first->first > std::chrono::steady_clock::now()) return nullptr;
  auto function = std::move(first->second);
  posted_.erase(first);
  return function;
}

std::optional<MainLoop::Time> MainLoop::nextDue() {
  const MutexLock lock(mutex_);
  if (posted_.empty()) return std::nullopt;
  return posted_.begin()->first;
}

}  // namespace quorvane
