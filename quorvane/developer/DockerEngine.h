#pragma once

#include "quorvane/core/DockerTargets.h"
#include "quorvane/developer/DockerClient.h"
#include "quorvane/developer/DockerServiceError.h"

#include <optional>
#include <string>
#include <utility>

namespace quorvane {

/// An engine as the client reaches it. Callable from any thread; each call waits for one run of the client.
class DockerEngine {
 public:
  /// The one that the client's own settings and environment lead to, whichever that is at each call.
  DockerEngine(const DockerClient& client, StopToken stop) : client_(client), stop_(std::move(stop)) {}
  /// The one behind this address.
  DockerEngine(const DockerClient& client, std::string endpoint, StopToken stop)
      : client_(client), endpoint_(std::move(endpoint)), stop_(std::move(stop)) {}

  CommandResult ask(const DockerClient::Arguments& arguments) const;

  /// What it says that it is; nothing when it cannot be asked.
  std::optional<std::string> identifier() const;

 private:
  const DockerClient& client_;
  std::optional<std::string> endpoint_;
  StopToken stop_;
};

/// Pins the engine that the client leads to now: its current context, the address in it, and what answers there.
/// Nothing when any of the three cannot be told. DOCKER_HOST and DOCKER_CONTEXT count as they do for the client.
std::optional<DockerCleanupScope> pinnedEngine(const DockerClient& client, const StopToken& stop);

/// The error of a run that failed.
DockerServiceError commandFailed(const CommandResult& result);

}  // namespace quorvane
