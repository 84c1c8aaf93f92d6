#pragma once

#include "quorvane/core/InUseIndex.h"
#include "quorvane/core/TakenPlaces.h"
#include "quorvane/removal/RemovalGuard.h"
#include "quorvane/removal/Remover.h"

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace quorvane {

/// One removal, from its first request to its last. Used once.
///
/// The requests go in batches: each is proved as a whole, announced in one write, moved, and recorded in one write. A
/// batch is small, so that little time passes between proving an item unchanged and moving it.
class RemovalRun {
 public:
  struct Task {
    const std::vector<RemovalRequest>& requests;
    const RemovalChecks& checks;
    const RemovalOptions& options;
    std::shared_ptr<OpenHistory> history;  ///< none for a rehearsal
    Date date;                             ///< of the run
  };

  RemovalRun(const RemovalServices& services, RemovalGuard& guard, Task task);

  Outcome<RemovalReport, RemovalError> perform();

 private:
  /// An item that nothing speaks against so far.
  struct Candidate {
    std::size_t index;  ///< of its request
    FilePath canonicalPath;
    ItemPlace place;
    std::int64_t size = 0;   ///< bytes, as measured
    FileStatus proven = {};  ///< when it was measured
  };
  using Batch = std::vector<Candidate>;

  Batch gather();
  bool endsBatch(const Batch& batch, std::int64_t bytes) const;
  Outcome<Candidate, RemovalRefusal> admitted(std::size_t index);
  std::optional<RemovalRefusal> refusalOfPlace(const Candidate& candidate);

  void prove(Batch& batch);
  std::optional<RemovalRefusal> refusalOfTree(const Candidate& candidate, const TreeOutcome& outcome);
  std::optional<RemovalRefusal> refusalOfUse(const FilePath& canonicalPath);

  /// A batch that was announced and is being moved, or was; what became of it is still to be written.
  struct Moving {
    CleanupMoveJournal::Transaction transaction;
    Batch batch;
    std::optional<std::int64_t> availableBytesDelta = std::nullopt;

    Moving(CleanupMoveJournal::Transaction begun, Batch announced)
        : transaction(std::move(begun)), batch(std::move(announced)) {}
  };

  Outcome<void, RecoveryStoreError> move(Batch batch);
  void recordLast();
  Uuid identifierOf(const Candidate& candidate);
  void perform(Moving& moving);
  void noteAvailable(Moving& moving, std::optional<std::int64_t> before);
  void keepUnrecorded();
  std::optional<std::int64_t> availableBytes(const Batch& batch);

  void refuse(std::size_t index, RemovalRefusal refusal);
  void refuseRest(const Batch& batch, const RecoveryStoreError& error);
  void noteDone(std::size_t index);
  bool isStopped();

  const RemovalServices& services_;
  RemovalGuard& guard_;
  Task task_;
  CleanupMoveJournal journal_;

  std::optional<Moving> moving_;
  std::size_t next_ = 0;  ///< the first request that no batch has
  std::size_t doneCount_ = 0;
  std::set<Uuid> identifiers_;
  TakenPlaces taken_;  ///< of one batch; of all in a rehearsal
  TakenPlaces moved_;
  std::future<Outcome<std::vector<RunningProcess>, PosixError>> firstReading_;
  std::optional<InUseIndex> inUse_;
  std::chrono::steady_clock::time_point inUseReadAt_;
  RemovalReport report_;
};

}  // namespace quorvane
