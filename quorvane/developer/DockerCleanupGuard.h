#pragma once

#include "quorvane/developer/DockerCleanup.h"
#include "quorvane/developer/DockerClient.h"
#include "quorvane/removal/HistoryStore.h"

#include <functional>

namespace quorvane {

struct DockerCleanupServices {
  const DockerClient& client;
  HistoryStore& history;
  const Clock& clock;
  RandomSource& random;
  const RecordTexts& texts;
};

struct DockerCleanupOptions {
  bool isRehearsal = false;  ///< everything is checked, nothing written or removed
  StopToken stop = {};       ///< ends the run after the target in hand
  /// After each target; the name is for people.
  std::function<void(std::size_t done, std::size_t count, const std::string& name)> progressed = {};
};

/// The one way by which anything is removed from a Docker engine: each target is announced in the history, checked anew
/// against its engine, removed by one command that names it in full and forces nothing, and looked for again. One call
/// at a time.
class DockerCleanupGuard {
 public:
  explicit DockerCleanupGuard(const DockerCleanupServices& services) : services_(services) {}

  /// Removes the targets in their order, then prunes the build cache if the plan says so. A target that is refused is a
  /// failure, and the others go on; one of which it is not certain whether it is gone keeps its intent, for the next
  /// start to find out. What the plan has as refused is recorded first. Fails only where the history could not be
  /// written before anything was tried; later, the targets
  /// that are left are failures. Waits for the client, which has half a minute for each of its runs.
  Outcome<DockerCleanupReport, RecoveryStoreError> remove(const DockerCleanupPlan& plan,
                                                          const DockerCleanupOptions& options);

 private:
  DockerCleanupServices services_;
};

}  // namespace quorvane
