#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/StopToken.h"
#include "quorvane/platform/ProcessRunner.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// What one run of the client came to.
struct CommandResult {
  std::string output;
  std::string error;
  std::int32_t exitCode = 0;  ///< -1 where the run has no status of its own

  bool hasSucceeded() const { return exitCode == 0; }
  bool operator==(const CommandResult&) const = default;
};

struct DockerClientSettings {
  FilePath program = {};
  std::map<std::string, std::string> environment = {};  ///< the application's own
  std::chrono::milliseconds timeLimit = std::chrono::seconds(30);
  std::size_t outputLimit = std::size_t{32} << 20;  ///< bytes; what prints more has failed
};

class DockerMemory;

/// Runs the client, on one processor where the environment does not say how many. Callable from any thread.
///
/// A run that does not end within the limit comes back with what it printed, "Command timed out." and -1; one that
/// cannot be started with "Unable to launch command." and -1; one that printed too much, or left a program behind that
/// goes on printing, with "Too much output." or "Incomplete output." and -1. A stop request ends a run like its limit.
class DockerClient {
 public:
  using Arguments = std::vector<std::string>;

  /// The runner outlives the object.
  DockerClient(ProcessRunner& runner, DockerClientSettings settings)
      : runner_(runner), settings_(std::move(settings)) {}

  /// The same client that asks nothing twice, for one thread at a time. The memory outlives it.
  DockerClient remembering(DockerMemory& memory) const;

  /// Towards the engine that the client's own settings and environment lead to.
  CommandResult run(const Arguments& arguments, const StopToken& stop) const;

  /// Towards this engine and no other: the address goes before the arguments, and nothing in the environment of the run
  /// can lead elsewhere.
  CommandResult runAt(const std::string& endpoint, const Arguments& arguments, const StopToken& stop) const;

 private:
  CommandResult startAt(const std::string& endpoint, const Arguments& arguments, const StopToken& stop) const;
  CommandResult start(Arguments arguments, std::map<std::string, std::string> environment, const StopToken& stop) const;

  ProcessRunner& runner_;
  DockerClientSettings settings_;
  DockerMemory* memory_ = nullptr;
};

}  // namespace quorvane
