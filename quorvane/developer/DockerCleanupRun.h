#pragma once

#include "quorvane/developer/DockerCleanupGuard.h"
#include "quorvane/developer/DockerEngine.h"
#include "quorvane/developer/DockerMeasurement.h"
#include "quorvane/developer/DockerRemovalJournal.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quorvane {

/// One run of the guard.
class DockerCleanupRun {
 public:
  /// All outlive the object. Without a journal the run is a rehearsal.
  DockerCleanupRun(const DockerCleanupServices& services, const DockerCleanupPlan& plan,
                   const DockerCleanupOptions& options, DockerRemovalJournal* journal)
      : services_(services), plan_(plan), options_(options), journal_(journal) {}

  Outcome<DockerCleanupReport, RecoveryStoreError> perform();

 private:
  /// What is removed by one command.
  struct Step {
    DockerResourceKind resource;
    const DockerCleanupScope& scope;
    DockerCleanupTarget target;
    std::vector<std::string> command;  // none for what has no name that can be one
    const DockerRetryTarget* object;   // one of these two
    const DockerCleanupOperation* prune;

    bool isPrune() const { return prune != nullptr; }
  };

  Outcome<void, RecoveryStoreError> keepRefused();
  std::vector<Step> steps() const;
  void take(const Step& step);
  std::optional<DockerRefusal> refusal(const Step& step) const;
  /// For people.
  std::string nameOf(const Step& step) const;
  CleaningHistoryItem itemOf(const Step& step) const;
  void fail(CleaningHistoryItem& item, const DockerRefusal& refusal) const;
  void remove(const Step& step, CleaningHistoryItem item);
  std::optional<DockerRefusal> removed(const Step& step);
  std::optional<DockerRefusal> pruned(const Step& step, CleaningHistoryItem& item);
  void keepFailed(const Step& step, const DockerRefusal& refusal);
  void keepRemoved(const Step& step, std::int64_t size);
  void addOutcomes(bool isRecorded, const std::optional<DockerDiskUsage>& before,
                   const std::optional<DockerDiskUsage>& after);
  std::optional<DockerDiskUsage> diskUsage(const std::vector<Step>& steps) const;
  /// A removal that has begun is never cut off, so these runs of the client know no stop.
  DockerEngine engineOf(const DockerCleanupScope& scope) const { return {services_.client, scope.endpoint, {}}; }

  const DockerCleanupServices& services_;
  const DockerCleanupPlan& plan_;
  const DockerCleanupOptions& options_;
  DockerRemovalJournal* journal_;
  DockerCleanupReport report_;
  std::map<DockerResourceKind, std::int64_t> removedCount_, removedBytes_, failedCount_;
  std::set<DockerResourceKind> unverifiable_;      ///< of which a listing did not tell what a removal came to
  std::optional<RecoveryStoreError> unannounced_;  ///< the history takes nothing any more
  bool hasAnnounced_ = false;
};

}  // namespace quorvane
