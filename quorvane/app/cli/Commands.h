#pragma once

#include "quorvane/app/cli/CommandLine.h"
#include "quorvane/app/cli/Console.h"
#include "quorvane/base/Outcome.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/scan/ScanSettings.h"

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
CommandOutcome runIgnore(const CommandContext& context);

/// The folders and the layout that the arguments and the environment ask for. The console learns the home of
/// the person, unless another one was asked for.
Outcome<ScanSettings, CommandError> requestedSettings(const CommandContext& context);

/// A path argument made absolute and standardised; with --home refused when it leads out of that home, also by a link.
Outcome<FilePath, CommandError> pathArgument(const CommandContext& context, FileSystem& fileSystem,
                                             const FilePath& home);

/// That home cannot be opened.
CommandError homeUnreadable(const FilePath& home);

}  // namespace quorvane
