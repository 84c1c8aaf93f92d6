#pragma once

#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/terminal/InterruptSignal.h"
#include "quorvane/app/cli/terminal/ProgressBar.h"
#include "quorvane/app/model/AppModel.h"
#include "quorvane/app/model/MainLoop.h"
#include "quorvane/base/Assert.h"

#include <optional>
#include <utility>

namespace quorvane {

/// How an operation ended.
template <class Result, class Fault>
struct EndedOperation {
  Outcome<Result, Fault> outcome;
  std::optional<ExitCode> cancelled;  ///< by a signal: how the run ends then
};

/// Runs one operation of the model to its end while the progress bar shows how far it is. After Ctrl-C and its kind the
/// bar goes at once, and the operation is asked to stop.
template <class Result, class Fault, class Start>
EndedOperation<Result, Fault> runOperation(Console& console, MainLoop& loop, AppModel& model,
                                           const CleaningScanProgressUpdate& beginning, Start start) {
  ProgressBar bar(console);
  bool isCancelled = false;
  std::optional<Outcome<Result, Fault>> outcome;
  loop.setInterruptHandler([&] {
    isCancelled = true;
    bar.interrupt();
    model.cancel();
  });
  const InterruptSignal signal(loop, console.errors());
  bar.show(beginning);
  start(AppModel::Handlers<Result, Fault>{.progressed =
                                              [&](const CleaningScanProgressUpdate& update) {
                                                if (!isCancelled) bar.show(update);
                                              },
                                          .finished =
                                              [&](Outcome<Result, Fault> ended) {
                                                outcome = std::move(ended);
                                                loop.stop();
                                              }});
  loop.run();
  bar.clear();
  loop.setInterruptHandler(nullptr);
  if (!outcome) abortOnBrokenInvariant("an operation ended without an outcome", std::source_location::current());
  return {*std::move(outcome), isCancelled ? std::optional(signal.exitCode()) : std::nullopt};
}

/// The same for one that only reads: cancelled, it has no result, whatever it still came to.
template <class Result, class Start>
Outcome<Result, CommandError> runToEnd(Console& console, MainLoop& loop, AppModel& model,
                                       const CleaningScanProgressUpdate& beginning, Start start) {
  auto [outcome, cancelled] = runOperation<Result, ScanFault>(console, loop, model, beginning, std::move(start));
  if (cancelled) return failure(CommandError{*cancelled, {messageKey(ScanFault::cancelled), {}}});
  if (outcome) return *std::move(outcome);
  switch (outcome.error()) {
    case ScanFault::cancelled:
      return failure(CommandError{ExitCode::cancelled, {messageKey(ScanFault::cancelled), {}}});
    case ScanFault::homeUnreadable: return failure(homeUnreadable(model.settings().folders.home));
  }
  std::unreachable();
}

/// The cleaning scan, to its end.
inline Outcome<ScanResult, CommandError> scanToEnd(Console& console, MainLoop& loop, AppModel& model,
                                                   const ScanRequest& request) {
  const CleaningScanProgressUpdate beginning{0, "scan.status.appCaches", std::nullopt};
  return runToEnd<ScanResult>(console, loop, model, beginning, [&](AppModel::Handlers<ScanResult> handlers) {
    model.scan(request, std::move(handlers));
  });
}

}  // namespace quorvane
