#include "quorvane/platform/ProcessRunner.h"
#include "quorvane/platform/posix/ChildProcess.h"
#include "quorvane/platform/posix/DataBox.h"
#include "quorvane/platform/posix/Retry.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <poll.h>
#include <unistd.h>

namespace quorvane {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds longestTick(50);  // how late a stop request may be seen
constexpr std::chrono::milliseconds patienceAfterTerminate(500);
constexpr std::chrono::milliseconds patienceForReaders(1000);
constexpr std::chrono::milliseconds longestLimit = std::chrono::hours(24 * 365);

/// Takes what a pipe holds, so much that the other one gets its turn too; closes the pipe at its end.
void drain(FileDescriptor& pipe, DataBox& box) {
  constexpr int mostBlocks = 16;
  std::array<char, 64 * 1024> block;
  for (int i = 0; i < mostBlocks && pipe.isOpen(); ++i) {
    const ssize_t count = retried([&] { return ::read(pipe.number(), block.data(), block.size()); });
    if (count < 0 && errno == EAGAIN) return;
    if (count <= 0) {
      pipe.close();
    } else {
      box.append({block.data(), static_cast<std::size_t>(count)});
    }
  }
}

/// One run of one command, from its start to its result.
class Run {
 public:
  Run(ChildProcess child, const ProcessRequest& request, StopToken stop)
      : child_(std::move(child)),
        stop_(std::move(stop)),
        limit_(SteadyClock::now() + std::clamp(request.timeLimit, std::chrono::milliseconds(0), longestLimit)),
        output_(request.outputLimit),
        error_(request.outputLimit) {}

  SafeProcessResult finish() {
    while (!isOver()) {
      waitForSomething();
      drain(child_.standardOutput(), output_);
      drain(child_.standardError(), error_);
      child_.hasEnded();
      endWhatOverran();
    }
    return result();
  }

 private:
  bool arePipesOpen() { return child_.standardOutput().isOpen() || child_.standardError().isOpen(); }

  bool isOver() {
    if (child_.hasEnded() && !arePipesOpen()) return true;
    return SteadyClock::now() >= limit_ + patienceForReaders;
  }

  void waitForSomething() {
    const int end = child_.hasEnded() ? -1 : child_.end().number();
    std::array<pollfd, 3> watched{{{child_.standardOutput().number(), POLLIN, 0},
                                   {child_.standardError().number(), POLLIN, 0},
                                   {end, POLLIN, 0}}};
    ::poll(watched.data(), watched.size(), static_cast<int>(tick().count()));
  }

  /// The time until something is due, at most the longest tick.
  std::chrono::milliseconds tick() const {
    const auto now = SteadyClock::now();
    const auto due = now < limit_ ? limit_ : now < killTime() ? killTime() : limit_ + patienceForReaders;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - now);
    return std::clamp(left, std::chrono::milliseconds(0), longestTick);
  }

  SteadyClock::time_point killTime() const { return limit_ + patienceAfterTerminate; }

  /// Whoever started something within the child's session answers for it until the limit, even when itself gone.
  void endWhatOverran() {
    const auto now = SteadyClock::now();
    const bool isStopped = stop_.stopRequested() && now < limit_;
    if (isStopped) limit_ = now;
    if (now < limit_) return;
    if (!wasTerminated_) {
      didTimeOut_ = !isStopped && !child_.hasEnded();
      child_.terminate();
      wasTerminated_ = true;
    } else if (now >= killTime() && !wasKilled_) {
      child_.kill();
      wasKilled_ = true;
    }
  }

  SafeProcessResult result() {
    SafeProcessResult result;
    result.exitCode = child_.exitCode();
    result.didTimeOut = didTimeOut_;
    result.droppedOutputBytes = output_.droppedBytes();
    result.droppedErrorBytes = error_.droppedBytes();
    result.isOutputComplete = !arePipesOpen();
    result.standardOutput = output_.takeData();
    result.standardError = error_.takeData();
    return result;
  }

  ChildProcess child_;
  StopToken stop_;
  SteadyClock::time_point limit_;
  DataBox output_;
  DataBox error_;
  bool wasTerminated_ = false;
  bool wasKilled_ = false;
  bool didTimeOut_ = false;
};

}  // namespace

Outcome<SafeProcessResult, PosixError> SafeProcessRunner::run(const ProcessRequest& request, StopToken stop) {
  auto child = ChildProcess::start(request);
  if (!child) return failure(child.error());
  return Run(std::move(*child), request, std::move(stop)).finish();
}

}  // namespace quorvane
