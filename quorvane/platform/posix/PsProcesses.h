#pragma once

#include "quorvane/platform/Clock.h"
#include "quorvane/platform/ProcessRunner.h"
#include "quorvane/platform/SystemProcesses.h"

#include <chrono>
#include <optional>
#include <string_view>
#include <vector>

namespace quorvane {

/// Asks ps, where the system has no better way. Its load is what ps calls so: on Linux the average since the process
/// was started.
class PsProcesses final : public SystemProcesses {
 public:
  struct Request {
    FilePath program{"/bin/ps"};
    std::chrono::milliseconds timeLimit{2000};
    std::size_t outputLimit = std::size_t{4} << 20;  ///< bytes; 40,000 processes
    std::chrono::seconds pause{30};                  ///< before it is asked again, once it hung or said too much
  };

  PsProcesses(const Clock& clock, ProcessRunner& runner, Request request)
      : clock_(clock), runner_(runner), request_(std::move(request)) {}

  /// Fails when ps cannot be started, is not done within its time (ETIMEDOUT), says too much (EFBIG), ends with
  /// anything but 0 (EIO), or says nothing that can be understood (EBADMSG). One that hung or said too much is left
  /// alone for a while: it fails for the same reason at once.
  Outcome<std::vector<SystemProcessSample>, PosixError> busiest(std::size_t most, StopToken stop) override;

 private:
  struct Trouble {
    PosixError error;
    std::chrono::steady_clock::time_point since;
  };

  Outcome<SafeProcessResult, PosixError> output(StopToken stop);

  const Clock& clock_;
  ProcessRunner& runner_;
  const Request request_;
  std::optional<Trouble> trouble_;  ///< the last one that took its time
};

/// Reads the columns pid, pcpu, rss and comm of ps, without a head; lines that are something else are passed over.
/// Nothing when no line is a process.
std::optional<std::vector<SystemProcessSample>> processesFromPs(std::string_view text);

/// Asks `first`, and `second` whenever that fails.
class FallbackProcesses final : public SystemProcesses {
 public:
  FallbackProcesses(SystemProcesses& first, SystemProcesses& second) : first_(first), second_(second) {}

  Outcome<std::vector<SystemProcessSample>, PosixError> busiest(std::size_t most, StopToken stop) override {
    auto outcome = first_.busiest(most, stop);
    return outcome || outcome.error().isCancelled() ? std::move(outcome) : second_.busiest(most, std::move(stop));
  }

 private:
  SystemProcesses& first_;
  SystemProcesses& second_;
};

}  // namespace quorvane
