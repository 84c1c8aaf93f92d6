#pragma once

#include "quorvane/base/Date.h"
#include "quorvane/base/JsonRecord.h"
#include "quorvane/base/Uuid.h"
#include "quorvane/core/DockerTargets.h"
#include "quorvane/removal/CleaningHistory.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What is to be removed from an engine, and what came of it.

namespace quorvane {

/// Why one target was not removed.
struct DockerRefusal {
  std::string reasonKey;
  CleanupFailureCategory category = CleanupFailureCategory::other;
  std::string detail = {};   ///< of the client; foreign
  bool isUncertain = false;  ///< it may be removed all the same, or be removed yet

  bool operator==(const DockerRefusal&) const = default;
};

struct DockerCleanupFailure {
  std::string target;
  DockerResourceKind resource = DockerResourceKind::images;
  DockerRefusal refusal;

  bool operator==(const DockerCleanupFailure&) const = default;
};

/// Exactly what a person reviewed.
struct DockerCleanupPlan {
  std::vector<DockerRetryTarget> targets = {};
  std::optional<DockerCleanupOperation> prune = {};  ///< of the build cache
  std::vector<DockerCleanupFailure> refused = {};    ///< selected as well, and refused before anything was tried

  bool removesNothing() const { return targets.empty() && !prune; }
  bool isEmpty() const { return removesNothing() && refused.empty(); }
  bool operator==(const DockerCleanupPlan&) const = default;
};

struct DockerCleanupCommandResult {
  std::vector<DockerCleanupTarget> successfulTargets;
  std::vector<DockerCleanupTarget> failedTargets;
  std::vector<CleaningHistoryItem> historyItems;

  bool operator==(const DockerCleanupCommandResult&) const = default;
};

/// What a removal came to for one kind of resource.
struct DockerCleanupOutcome {
  Uuid id;
  DockerResourceKind resource = DockerResourceKind::images;
  std::int64_t reclaimedBytes = 0;  ///< measured, or else what was predicted
  std::int64_t predictedBytes = 0;  ///< the reviewed sizes of what was removed
  bool isMeasured = false;
  std::int64_t successfulCount = 0;
  std::int64_t failedCount = 0;
  Date completedAt;
  bool historyWasRecorded = false;
  bool usageGrew = false;               ///< something was removed, but others made more meanwhile; not measured then
  bool measurementUnavailable = false;  ///< something was removed, but the disk usage was not told before and after

  bool operator==(const DockerCleanupOutcome&) const = default;
};
QV_JSON_FIELDS(DockerCleanupOutcome, id, resource, reclaimedBytes, predictedBytes, isMeasured, successfulCount,
               failedCount, completedAt, historyWasRecorded, usageGrew, measurementUnavailable)

struct DockerCleanupReport {
  std::vector<DockerCleanupOutcome> outcomes = {};  ///< one for each kind that was selected
  DockerCleanupCommandResult result = {};
  std::optional<std::int64_t> prunedCount = {};  ///< how many reviewed parts of the build cache a prune took
  std::vector<DockerCleanupFailure> failures = {};
  DockerCleanupPlan wouldRemove = {};  ///< of a rehearsal
  bool wasStopped = false;             ///< some targets were left as they are

  bool operator==(const DockerCleanupReport&) const = default;
};

}  // namespace quorvane
