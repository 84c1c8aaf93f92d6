#pragma once

#include "quorvane/app/cli/arguments/CommandError.h"
#include "quorvane/app/cli/terminal/Console.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// Where and for whom a run takes place.
struct CommandLineEnvironment {
  EnvironmentVariables variables;
  std::optional<FilePath> workingFolder;                             ///< empty when the system does not tell it
  std::optional<std::vector<FilePath>> dockerPlaces = std::nullopt;  ///< of a test; none: those of the system
};

/// One run of the program: does what `arguments` (without the program's name) ask for, and returns its exit code.
int runCommandLine(const std::vector<std::string>& arguments, CommandLineStreams streams,
                   const CommandLineEnvironment& environment);

}  // namespace quorvane
