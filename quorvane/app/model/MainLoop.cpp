#include "quorvane/app/model/MainLoop.h"

#include "quorvane/base/Assert.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <span>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace quorvane {

static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may touch only what takes no lock");

namespace {

void prepare(int descriptor) {
  const bool isReady = ::fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0 && ::fcntl(descriptor, F_SETFL, O_NONBLOCK) == 0;
  require(isReady, "a pipe cannot be prepared");
}

}  // namespace

MainLoop::MainLoop() {
  std::array<int, 2> ends{};
  require(::pipe(ends.data()) == 0, "there is no descriptor left for a pipe");
  wakeReader_ = FileDescriptor(ends[0]);
  wakeWriter_ = FileDescriptor(ends[1]);
  for (const int end : ends) prepare(end);
}

void MainLoop::postAfter(std::chrono::milliseconds delay, std::function<void()> function) {
  const Time due = std::chrono::steady_clock::now() + delay;
  {
    const MutexLock lock(mutex_);
    posted_.emplace(due, std::move(function));
  }
  wake();
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
  wake();
}

void MainLoop::interrupt() noexcept {
  isInterrupted_ = true;
  wake();
}

void MainLoop::wake() noexcept {
  const int before = errno;  // a signal handler leaves it as it was
  const char byte = 0;
  // A full pipe wakes as well.
  [[maybe_unused]] const auto written = ::write(wakeWriter_.number(), &byte, 1);
  errno = before;
}

void MainLoop::sleep(std::optional<Time> until) {
  int milliseconds = -1;
  if (until) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*until - std::chrono::steady_clock::now()).count();
    milliseconds = static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
  }
  std::vector<pollfd> waiting{{wakeReader_.number(), POLLIN, 0}};
  waiting.reserve(watched_.size() + 1);
  for (const auto& [descriptor, readable] : watched_) waiting.push_back({descriptor, POLLIN, 0});
  const int readyCount = ::poll(waiting.data(), waiting.size(), milliseconds);
  std::array<char, 64> bytes{};
  while (::read(wakeReader_.number(), bytes.data(), bytes.size()) > 0) {}
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
