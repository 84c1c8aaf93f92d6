#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/StopToken.h"
#include "quorvane/platform/PosixError.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// A command to be run directly: no shell reads it.
struct ProcessRequest {
  FilePath executable;
  std::vector<std::string> arguments;              ///< without the program's own name
  std::map<std::string, std::string> environment;  ///< the child gets exactly these
  std::optional<FilePath> workingFolder;
  std::chrono::milliseconds timeLimit{0};
  std::size_t outputLimit = std::size_t{16} << 20;  ///< bytes kept of each stream
};

/// What a command left.
struct SafeProcessResult {
  std::string standardOutput;
  std::string standardError;
  std::int32_t exitCode = 0;  ///< 128 + the signal for a child that a signal ended; -1 if it could not be learnt
  bool didTimeOut = false;

  std::uint64_t droppedOutputBytes = 0;  ///< beyond the limit: read and thrown away
  std::uint64_t droppedErrorBytes = 0;
  bool isOutputComplete = true;  ///< false when a grandchild still held a pipe at the end of the wait
};

/// The one way to run a command. Tests put their own in its place.
class ProcessRunner {
 public:
  virtual ~ProcessRunner() = default;

  /// Runs the command to its end and waits for it: at most its time limit and a little more than one second. A stop
  /// request ends the child as a reached limit does. Fails only when the executable cannot be started.
  virtual Outcome<SafeProcessResult, PosixError> run(const ProcessRequest& request, StopToken stop) = 0;
};

/// Both streams are drained while the child runs; standard input is empty; no other descriptor reaches the child. At
/// the limit the child is asked to end (SIGTERM) and half a second later made to (SIGKILL). The streams are waited for
/// until the limit and one second at most. Stateless; callable from any thread, blocks only that one.
///
/// The child gets a session of its own, without a terminal: it can ask nobody anything, keys such as Ctrl-C do not
/// reach it, and the two signals reach everything that it started and that stayed in its session. A face therefore
/// turns the signals that end it into a stop request, so that no child outlives it.
///
/// Refuses (EINVAL) an executable that is not absolute, a NUL in any text, and a variable with an empty name or a "="
/// in it; otherwise fails with the system's reason (ENOENT, EACCES, ...), for a missing working folder too.
class SafeProcessRunner final : public ProcessRunner {
 public:
  Outcome<SafeProcessResult, PosixError> run(const ProcessRequest& request, StopToken stop) override;
};

}  // namespace quorvane
