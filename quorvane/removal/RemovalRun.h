#pragma once

#include "quorvane/core/InUseIndex.h"
#include "quorvane/core/TakenPlaces.h"
#include "quorvane/removal/BatchMover.h"
#include "quorvane/removal/RemovalGuard.h"

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace quorvane {

/// One removal, from its first request to its last. Used once.
///
/// The requests go in batches: each is proved as a whole and handed to the `BatchMover`, which moves it while the next
/// one is proved. A batch is small, so that little time passes between proving an item unchanged and moving it.
class RemovalRun {
 public:
  struct Task {
    const std::vector<RemovalRequest>& requests;
    const RemovalChecks& checks;
    const RemovalOptions& options;
    std::shared_ptr<OpenHistory> history;  ///< none for a rehearsal
    Date date;                             ///< of the run
  };

  RemovalRun(const RemovalServices& services, RemovalGuard& guard, const Task& task);

  Outcome<RemovalReport, RemovalError> perform();

 private:
  ProvedBatch nextBatch();
  bool endsBatch(const ProvedBatch& batch, std::int64_t bytes) const;
  Outcome<ProvedItem, RemovalRefusal> admitted(std::size_t index, ItemPlaces& places);
  const FilePath& reviewedPlace(std::size_t index) const;
  bool wentWithAnother(const FilePath& place) const;
  std::optional<RemovalRefusal> refusalOfRehearsed(const FilePath& canonicalPath);

  void prove(ProvedBatch& batch);
  std::optional<RemovalRefusal> refusalOfTree(const ProvedItem& item, const TreeOutcome& outcome);
  std::optional<RemovalRefusal> refusalOfUse(const FilePath& canonicalPath);

  void rehearse();
  Outcome<void, RecoveryStoreError> move();

  const RemovalServices& services_;
  RemovalGuard& guard_;
  const Task& task_;
  RunReport report_;
  BatchMover mover_;

  std::size_t next_ = 0;  ///< the first request that no batch has
  std::set<Uuid> identifiers_;
  TakenPlaces taken_;  ///< of one batch
  TakenPlaces gone_;   ///< what a rehearsal found to be movable
  std::future<Outcome<std::vector<RunningProcess>, PosixError>> firstReading_;
  std::optional<InUseIndex> inUse_;
  std::chrono::steady_clock::time_point inUseReadAt_;
};

}  // namespace quorvane
