#pragma once

#include "quorvane/developer/DockerCleanupGuard.h"

#include <optional>
#include <span>

namespace quorvane {

/// What the last run left: the targets of the first Docker run in the history, newest first, that failed, with the
/// scope that they were reviewed in. What a run left uncertain is not among them. The history is foreign: a target
/// without a name that can be one is passed over. Nothing where there is none.
DockerCleanupPlan failedTargets(std::span<const CleaningHistoryEntry> entries);

/// Why a plan cannot be tried again.
enum class DockerRetryFault {
  nothing,  ///< the last run left nothing to try again
  scope,    ///< its engine is neither on this machine nor the one that the client leads to
};
QV_CASE_NAMES(DockerRetryFault, nothing, scope)

/// "docker.retry.error." and the name of the case.
std::string messageKey(DockerRetryFault fault);

/// Tries failed targets again, with all the checks of the guard and towards the same engine. One call at a time.
class DockerCleanupRetryService {
 public:
  /// Both outlive the object.
  DockerCleanupRetryService(DockerCleanupGuard& guardService, const DockerClient& client)
      : guardService_(guardService), client_(client) {}

  /// Why these cannot be tried; nothing when they can.
  std::optional<DockerRetryFault> faultOf(const DockerCleanupPlan& plan) const;

  Outcome<DockerCleanupReport, RecoveryStoreError> retry(const DockerCleanupPlan& plan,
                                                         const DockerCleanupOptions& options) {
    return guardService_.remove(plan, options);
  }

 private:
  DockerCleanupGuard& guardService_;
  const DockerClient& client_;
};

}  // namespace quorvane
