#pragma once

#include "quorvane/developer/DockerClient.h"
#include "quorvane/removal/IrreversibleCheck.h"

#include <functional>
#include <optional>

namespace quorvane {

/// Asks the engine what became of an announced removal: whether the object is still listed, or, of a pruned build
/// cache, anything of what was reviewed. Another engine, or none, tells nothing.
class DockerRemovalCheck final : public IrreversibleCheck {
 public:
  /// `makeClient` gives the client to ask with, or nothing; it is called at each look.
  explicit DockerRemovalCheck(std::function<std::optional<DockerClient>()> makeClient)
      : makeClient_(std::move(makeClient)) {}

  IrreversibleFinding look(const CleaningHistoryItem& item) override;

 private:
  const std::function<std::optional<DockerClient>()> makeClient_;
};

/// Whether a scope that was read back may be followed: its address is a socket of this machine, or the one that the
/// client leads to now. Anything else could be an address that somebody else has written there.
bool mayFollow(const DockerClient& client, const DockerCleanupScope& scope);

}  // namespace quorvane
