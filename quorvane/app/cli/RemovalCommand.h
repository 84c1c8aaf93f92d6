#pragma once

#include "quorvane/app/cli/Commands.h"

#include <functional>

namespace quorvane {

/// What `clean` and `trash` work with.
struct RemovalTask {
  const CommandContext& context;
  MainLoop& loop;
  AppModel& model;

  Console& console() const { return context.console; }
  const RemovalArguments& asked() const { return context.invocation.removal; }
  /// Nobody is to be asked.
  bool isSettled() const { return asked().isRehearsal || asked().isConfirmed; }

  /// Puts the question, where somebody is to be asked, and moves after a yes. Refused where nobody can be asked:
  /// `isInputTaken` tells that the input holds something else than answers.
  CommandOutcome moveIfConfirmed(bool isInputTaken, const std::function<bool()>& ask,
                                 const std::function<CommandOutcome()>& move) const;
};

/// Runs such a command: a class that is made of a task and has a `run`.
template <class Command>
CommandOutcome runRemovalCommand(const CommandContext& context) {
  return withModel(context, [&](MainLoop& loop, AppModel& model) {
    return Command(RemovalTask{context, loop, model}).run();
  });
}

}  // namespace quorvane
