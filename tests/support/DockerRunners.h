#pragma once

#include "quorvane/platform/ProcessRunner.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace quorvane {

using Words = std::vector<std::string>;

/// A runner that keeps what it was asked, answers as it is told, and hands the rest to a real one. Thread-safe as far
/// as the functions are that it was given.
class WatchedRunner final : public ProcessRunner {
 public:
  /// What the client prints instead of running; nothing lets it run. Arguments without "--host" and the address.
  std::function<std::optional<SafeProcessResult>(const Words& arguments)> answers = nullptr;
  /// Called before a run.
  std::function<void(const Words& arguments)> before = nullptr;

  Outcome<SafeProcessResult, PosixError> run(const ProcessRequest& request, StopToken stop) override {
    Words arguments = request.arguments;
    if (!arguments.empty() && arguments.front() == "--host") arguments.erase(arguments.begin(), arguments.begin() + 2);
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(request);
    }
    if (before) before(arguments);
    if (answers)
      if (auto answer = answers(arguments)) return *std::move(answer);
    return SafeProcessRunner().run(request, std::move(stop));
  }

  std::vector<ProcessRequest> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

  /// As if nothing had been asked.
  void forget() {
    const std::lock_guard lock(mutex_);
    requests_.clear();
  }

  /// How often a command was run that begins with these words.
  std::size_t countOf(const Words& beginning) const {
    std::size_t count = 0;
    for (const ProcessRequest& request : requests()) {
      const std::size_t skipped = !request.arguments.empty() && request.arguments.front() == "--host" ? 2 : 0;
      if (request.arguments.size() < skipped + beginning.size()) continue;
      if (std::equal(beginning.begin(), beginning.end(), request.arguments.begin() + std::ptrdiff_t(skipped))) ++count;
    }
    return count;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<ProcessRequest> requests_;
};

inline SafeProcessResult printed(std::string output) { return {std::move(output), {}}; }
inline SafeProcessResult failed(std::string error, std::int32_t exitCode = 1) {
  return {{}, std::move(error), exitCode};
}

}  // namespace quorvane
