#pragma once

#include "quorvane/app/cli/CommandLine.h"
#include "quorvane/app/cli/Console.h"
#include "quorvane/app/model/AppModel.h"
#include "quorvane/app/model/MainLoop.h"
#include "quorvane/base/Outcome.h"
#include "quorvane/platform/FileSystem.h"

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
CommandOutcome runIgnoreList(const CommandContext& context);
CommandOutcome runIgnoreAdd(const CommandContext& context);
CommandOutcome runIgnoreRemove(const CommandContext& context);

/// Calls the command with a model of the home that the arguments and the environment ask for. The console learns the
/// home of the person, unless another one was asked for.
CommandOutcome withModel(const CommandContext& context,
                         const std::function<CommandOutcome(MainLoop&, AppModel&)>& command);

/// A path argument made absolute and standardised; with --home refused when it leads out of that home, also by a link.
Outcome<FilePath, CommandError> pathArgument(const CommandContext& context, FileSystem& fileSystem,
                                             const FilePath& home);

/// That home cannot be opened.
CommandError homeUnreadable(const FilePath& home);

}  // namespace quorvane
