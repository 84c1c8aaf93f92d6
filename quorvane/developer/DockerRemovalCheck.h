#pragma once

#include "quorvane/developer/DockerMemory.h"
#include "quorvane/platform/Clock.h"
#include "quorvane/removal/IrreversibleCheck.h"

#include <chrono>
#include <functional>
#include <optional>

namespace quorvane {

/// Asks the engine what became of an announced removal: whether the reviewed object is still listed, or, of a pruned
/// build cache, all of what was reviewed or nothing of it; a part of it tells nothing. Another engine, or none, tells
/// nothing. What is still listed counts so only
/// once the run that announced it, and its client, must have ended: an engine finishes what a client no longer waits
/// for. Within one settling nothing is asked twice, and an engine that was silent once is asked nothing more.
class DockerRemovalCheck final : public IrreversibleCheck {
 public:
  static constexpr std::chrono::minutes longestRemoval{5};  ///< after the announcement: the checks and the command

  /// `makeClient` gives the client to ask with, or nothing; it is called at each look. The clock outlives the object.
  DockerRemovalCheck(std::function<std::optional<DockerClient>()> makeClient, const Clock& clock)
      : makeClient_(std::move(makeClient)), clock_(clock) {}

  void begin() override { memory_ = {}; }
  IrreversibleFinding look(const CleaningHistoryItem& item) override;

 private:
  const std::function<std::optional<DockerClient>()> makeClient_;
  const Clock& clock_;
  DockerMemory memory_;
};

/// Whether a scope that was read back may be followed: its address is a socket of this machine, or the one that the
/// client leads to now. Anything else could be an address that somebody else has written there.
bool mayFollow(const DockerClient& client, const DockerCleanupScope& scope);

}  // namespace quorvane
