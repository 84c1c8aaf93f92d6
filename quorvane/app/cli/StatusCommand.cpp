#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/StatusWatch.h"
#include "quorvane/app/cli/reports/StatusReport.h"
#include "quorvane/app/cli/terminal/InterruptSignal.h"
#include "quorvane/app/model/StatusModel.h"
#include "quorvane/health/SystemStatusDocument.h"

#include <optional>

namespace quorvane {

namespace {

/// One run of the command: shows sample after sample until there were enough or somebody ends it.
class StatusRun {
 public:
  StatusRun(Console& console, const StatusArguments& asked)
      : console_(console),
        asked_(asked),
        left_(asked.isWatched ? asked.count : std::optional<std::int64_t>(1)),
        model_(loop_, {.monitor = {.refreshInterval = asked.interval}}, [this] { published(); }) {}

  ExitCode run() {
    bool isInterrupted = false;
    loop_.setInterruptHandler([&] {
      isInterrupted = true;
      loop_.stop();
    });
    const InterruptSignal signal(loop_, console_.output());
    if (asked_.isWatched && !console_.wantsJson() && console_.outputStyle().canRedraw)
      watch_.emplace(console_, loop_, model_.monitor(), asked_.sort);
    const int pipe = console_.output().pipe();
    if (pipe != OutputChannel::nothing) loop_.watch(pipe, [this] { loop_.stop(); });  // its reader has gone
    model_.monitor().start();
    loop_.run();
    const bool isLost = watch_ && watch_->isLost();
    leaveBoard();
    if (isLost) return ExitCode::hungUp;
    return isInterrupted ? signal.exitCode() : ExitCode::done;
  }

 private:
  void published() {
    if (watch_) watch_->sampled();
    if (!std::exchange(hasRates_, true)) return;
    if (!watch_) print();
    if (left_) --*left_;
    if (left_ == 0 || console_.output().failure() != 0) loop_.stop();
  }

  void print() {
    const SystemStatusSnapshot& snapshot = model_.monitor().snapshot();
    if (console_.wantsJson()) {
      console_.print(asked_.isWatched ? jsonLine(snapshot) : jsonText(snapshot));
    } else {
      console_.print(asked_.isWatched ? report() + "\n" : report());
    }
  }

  /// The screen of the board goes with it; what was asked for stays behind, once all of it was there.
  void leaveBoard() {
    const bool hadBoard = watch_.has_value();
    watch_.reset();
    if (hadBoard && left_ == 0) console_.print(report());
  }

  std::string report() { return statusReport(model_.monitor().snapshot(), asked_.sort, console_.outputReport()); }

  Console& console_;
  const StatusArguments asked_;
  std::optional<std::int64_t> left_;  ///< how many samples are still to be shown
  bool hasRates_ = false;
  MainLoop loop_;
  StatusModel model_;
  std::optional<StatusWatch> watch_;
};

}  // namespace

CommandOutcome runStatus(const CommandContext& context) {
  return StatusRun(context.console, context.invocation.status).run();
}

}  // namespace quorvane
