#include "quorvane/app/cli/RemovalCommand.h"

namespace quorvane {

CommandOutcome RemovalTask::moveIfConfirmed(bool isInputTaken, const std::function<bool()>& ask,
                                            const std::function<CommandOutcome()>& move) const {
  if (isSettled()) return move();
  if (console().wantsJson() || isInputTaken || !console().canAsk())
    return failure(CommandError{ExitCode::refused, {"cli.error.cannotAsk", {}}});
  if (ask()) return move();
  console().show(console().text({"cli.clean.declined", {}}) + "\n");
  return console().wasInterrupted() ? ExitCode::cancelled : ExitCode::done;
}

}  // namespace quorvane
