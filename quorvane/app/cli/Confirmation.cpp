#include "quorvane/app/cli/Confirmation.h"

namespace quorvane {

std::optional<CommandError> whyNotToAsk(const Console& console, bool isInputTaken) {
  if (!console.wantsJson() && !isInputTaken && console.canAsk()) return std::nullopt;
  return CommandError{ExitCode::refused, {"cli.error.cannotAsk", {}}};
}

CommandOutcome declined(Console& console) {
  console.show(console.text({"cli.clean.declined", {}}) + "\n");
  return console.wasInterrupted() ? ExitCode::cancelled : ExitCode::done;
}

}  // namespace quorvane
