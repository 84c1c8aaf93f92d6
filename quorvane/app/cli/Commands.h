#pragma once

#include "quorvane/app/cli/CommandLine.h"
#include "quorvane/app/cli/terminal/Console.h"
#include "quorvane/app/model/AppModel.h"
#include "quorvane/app/model/MainLoop.h"
#include "quorvane/base/Outcome.h"

#include <functional>

namespace quorvane {

/// What a command works with.
struct CommandContext {
  Console& console;
  const Invocation& invocation;
  const CommandLineEnvironment& environment;
};

using CommandOutcome = Outcome<ExitCode, CommandError>;

CommandOutcome runOverview(const CommandContext& context);
CommandOutcome runScan(const CommandContext& context);
CommandOutcome runClean(const CommandContext& context);
CommandOutcome runTrash(const CommandContext& context);
CommandOutcome runHistory(const CommandContext& context);
CommandOutcome runHistoryShow(const CommandContext& context);
CommandOutcome runRestore(const CommandContext& context);
CommandOutcome runDockerList(const CommandContext& context);
CommandOutcome runDockerClean(const CommandContext& context);
CommandOutcome runDockerRetry(const CommandContext& context);
CommandOutcome runIgnoreList(const CommandContext& context);
CommandOutcome runIgnoreAdd(const CommandContext& context);
CommandOutcome runIgnoreRemove(const CommandContext& context);
CommandOutcome runStatus(const CommandContext& context);

/// Calls the command with a model of the home that the arguments and the environment ask for. The console learns the
/// home of the person, unless another one was asked for.
CommandOutcome withModel(const CommandContext& context,
                         const std::function<CommandOutcome(MainLoop&, AppModel&)>& command);

/// A path that a person gave, made absolute and standardised.
Outcome<FilePath, CommandError> absoluteArgument(const CommandContext& context, const std::string& given);

/// The same; with --home refused when it leads out of that home, also by a link.
Outcome<FilePath, CommandError> pathArgument(const CommandContext& context, AppModel& model, const std::string& given);

/// The same for the object itself that has this path: a link at its end is not followed.
Outcome<FilePath, CommandError> objectArgument(const CommandContext& context, AppModel& model,
                                               const std::string& given);

/// That home cannot be opened.
CommandError homeUnreadable(const FilePath& home);

}  // namespace quorvane
