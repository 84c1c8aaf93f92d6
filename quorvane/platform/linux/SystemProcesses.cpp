#include "quorvane/platform/SystemProcesses.h"

#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/platform/linux/LinuxProcesses.h"
#include "quorvane/platform/posix/PsProcesses.h"

namespace quorvane {

namespace {

/// /proc, and ps where that cannot be read.
class ProcElsePs final : public SystemProcesses {
 public:
  ProcElsePs(const Clock& clock, ProcessRunner& runner)
      : proc_({"/proc"}, ProcessUnits::ofThisSystem(), clock), ps_(clock, runner, {}), either_(proc_, ps_) {}

  Outcome<std::vector<SystemProcessSample>, PosixError> busiest(std::size_t most, StopToken stop) override {
    return either_.busiest(most, std::move(stop));
  }

 private:
  LinuxProcesses proc_;
  PsProcesses ps_;
  FallbackProcesses either_;
};

}  // namespace

std::unique_ptr<SystemProcesses> makeSystemProcesses(const Clock& clock, ProcessRunner& runner) {
  return std::make_unique<ProcElsePs>(clock, runner);
}

}  // namespace quorvane
