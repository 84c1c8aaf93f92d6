#pragma once

#include "quorvane/base/Outcome.h"
#include "quorvane/developer/DockerCleanup.h"
#include "quorvane/developer/DockerClient.h"
#include "quorvane/developer/DockerSelection.h"

#include <chrono>
#include <span>

namespace quorvane {

/// What the last run left: the targets of the first Docker run in the history, newest first, that failed, with the
/// scope that they were reviewed in. What a run left uncertain is not among them. The history is foreign: a target
/// without a name that can be one is passed over. Nothing where there is none.
DockerCleanupPlan failedTargets(std::span<const CleaningHistoryEntry> entries);

/// Why a plan cannot be tried again.
enum class DockerRetryFault {
  nothing,  ///< the last run left nothing to try again
  stale,    ///< its review is older than any that may be acted upon, or its time is yet to come
  scope,    ///< its engine is neither on this machine nor the one that the client leads to
};
QV_CASE_NAMES(DockerRetryFault, nothing, stale, scope)

/// "docker.retry.error." and the name of the case.
std::string messageKey(DockerRetryFault fault);

/// Makes the plan of a retry out of the history; the guard carries it out like any other, with all its checks and
/// towards the same engine. Changes nothing.
class DockerCleanupRetryService {
 public:
  /// The client outlives the object.
  explicit DockerCleanupRetryService(const DockerClient& client) : client_(client) {}

  static constexpr std::chrono::hours longestValidity{24};  ///< as of a review that was kept

  /// The failed targets of the last run, if they may be tried again at this time. May wait for the client.
  Outcome<DockerReview, DockerRetryFault> plan(std::span<const CleaningHistoryEntry> entries, Date now) const;

 private:
  const DockerClient& client_;
};

}  // namespace quorvane
