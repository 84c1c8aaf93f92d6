#pragma once

#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/InterruptSignal.h"
#include "quorvane/app/cli/ProgressBar.h"
#include "quorvane/app/model/AppModel.h"
#include "quorvane/app/model/MainLoop.h"

#include <optional>
#include <utility>

namespace quorvane {

/// Runs one operation of the model to its end while the progress bar shows how far it is. After Ctrl-C and its
/// kind the bar goes at once, and the operation counts as cancelled whatever it still came to.
template <class Result, class Start>
Outcome<Result, CommandError> runToEnd(Console& console, MainLoop& loop, AppModel& model,
                                       const CleaningScanProgressUpdate& beginning, Start start) {
  ProgressBar bar(console);
  bool isCancelled = false;
  std::optional<Outcome<Result, ScanFault>> outcome;
  loop.setInterruptHandler([&] {
    isCancelled = true;
    bar.clear();
    model.cancel();
  });
  const InterruptSignal signal(loop);
  bar.show(beginning);
  start(AppModel::Handlers<Result>{.progressed =
                                       [&](const CleaningScanProgressUpdate& update) {
                                         if (!isCancelled) bar.show(update);
                                       },
                                   .finished =
                                       [&](Outcome<Result, ScanFault> ended) {
                                         outcome = std::move(ended);
                                         loop.stop();
                                       }});
  loop.run();
  bar.clear();
  if (!outcome || isCancelled) outcome = failure(ScanFault::cancelled);
  if (*outcome) return std::move(**outcome);
  const ScanFault fault = outcome->error();
  switch (fault) {
    case ScanFault::cancelled: return failure(CommandError{signal.exitCode(), {messageKey(fault), {}}});
    case ScanFault::homeUnreadable: return failure(homeUnreadable(model.settings().folders.home));
  }
  std::unreachable();
}

}  // namespace quorvane
