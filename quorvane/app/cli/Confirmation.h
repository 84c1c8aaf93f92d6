#pragma once

#include "quorvane/app/cli/Commands.h"

#include <optional>

namespace quorvane {

/// Why nobody can be asked, and what to do instead; nothing when somebody can. `isInputTaken` tells that the input
/// holds something else than answers.
std::optional<CommandError> whyNotToAsk(const Console& console, bool isInputTaken);

/// How a run ends whose question was answered with no, or with Ctrl-C.
CommandOutcome declined(Console& console);

}  // namespace quorvane
