#pragma once

#include "quorvane/base/Message.h"

#include <optional>

namespace quorvane {

/// How a run ended, for whoever started it.
enum class ExitCode {
  done = 0,
  someNotDone = 1,
  wrongUsage = 2,
  refused = 3,
  internalError = 4,
  hungUp = 129,      ///< cancelled by SIGHUP; these three are 128 and the signal, as shells have it
  cancelled = 130,   ///< by Ctrl-C
  terminated = 143,  ///< by SIGTERM
};

/// Why a command did not do what it was asked for.
struct CommandError {
  ExitCode code;
  Message message;
  std::optional<Message> hint = std::nullopt;  ///< what to do instead

  bool operator==(const CommandError&) const = default;
};

}  // namespace quorvane
