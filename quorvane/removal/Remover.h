#pragma once

#include "quorvane/base/StopToken.h"
#include "quorvane/core/FileTreeSnapshot.h"
#include "quorvane/core/IgnoreRuleStore.h"
#include "quorvane/core/TreeWalker.h"
#include "quorvane/platform/ProcessTable.h"
#include "quorvane/removal/HistoryStore.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvane {

/// One reviewed item that is to go to the Trash.
struct RemovalRequest {
  Uuid id;
  std::string name;  ///< for people
  FilePath path;     ///< as it was reviewed: absolute, standardised
  std::int64_t size = 0;
  std::optional<FileTreeSnapshot> snapshot;  ///< what was reviewed; without one nothing can be proved, so it is refused
  std::optional<MobileBackupMetadata> backupMetadata = std::nullopt;
};

/// Why an item is not removed.
struct RemovalRefusal {
  std::string reasonKey;
  CleanupFailureCategory category;

  bool operator==(const RemovalRefusal&) const = default;
};

RemovalRefusal refusalOf(const MoveFailure& failure);
/// "cleanup.failure.protected": whoever asks, this is not removed.
RemovalRefusal protectedRefusal();
/// "cleanup.failure.mountPoint"
RemovalRefusal mountRefusal();

/// What a caller checks beyond the rules that hold for every removal. Given the index of the request.
struct RemovalChecks {
  /// Before anything of the item is looked at. May be asked twice of one item.
  std::function<std::optional<RemovalRefusal>(std::size_t)> before = {};
  /// After the item was proved unchanged; with what measuring it found.
  std::function<std::optional<RemovalRefusal>(std::size_t, const TreeMeasurement&)> measured = {};
  /// Names of entries that measuring counts for it; they outlive the removal.
  std::span<const std::string_view> watchedNames = {};
};

struct RemovalFailure {
  std::size_t index;  ///< of the request
  RemovalRefusal refusal;

  bool operator==(const RemovalFailure&) const = default;
};

/// What came of a removal.
struct RemovalReport {
  std::vector<CleaningHistoryEntry> entries;  ///< of everything that was begun, in the order of the requests
  std::vector<RemovalFailure> failures;       ///< in the order of the requests
  std::vector<std::size_t> wouldMove;         ///< of a rehearsal: the requests that nothing speaks against
  std::int64_t movedCount = 0;
  std::int64_t movedBytes = 0;
  std::optional<std::int64_t> availableBytesDelta;  ///< measured around the run
  bool wasStopped = false;
};

/// Why nothing at all was removed.
using RemovalError = std::variant<RecoveryStoreError, IgnoreRuleError, PosixError>;

struct RemovalOptions {
  CleaningHistorySource source = CleaningHistorySource::files;
  bool isRehearsal = false;  ///< all is checked but the Trash, which may have to be made; nothing is written or moved
  StopToken stop = {};       ///< ends the run after the item in hand
  std::function<void(std::size_t done, std::size_t count, const FilePath& path)> progressed = {};
};

/// What the remover works with; all of it outlives the remover.
struct RemovalServices {
  const MoveServices& moves;
  ProcessTable& processReader;
  TreeWalker& walker;
  IgnoreRuleStore& ignoreStore;
  HistoryStore& history;
  RandomSource& random;
};

/// What is known of a path that a person named: the request for it, or why it can never be removed.
using ReviewOutcome = Outcome<RemovalRequest, RemovalRefusal>;

struct ReviewOptions {
  StopToken stop = {};
  std::function<void(std::size_t done, std::size_t count, const FilePath& path)> progressed = {};
};

class RemovalGuard;

/// The one road by which anything goes to the Trash.
///
/// For each item, in this order: the caller's first check; the rules that hold for every path (absolute and
/// standardised, not the home, nothing that the program needs, not the Trash, not ignored, no mount point and none
/// inside); its snapshot taken anew and compared; the caller's second check; not in use by any process. What passes is
/// moved through the journal. Refused for a rule is `protected`, whatever the caller says of it.
class Remover {
 public:
  /// `home` and `applicationSupport` are never removed, nor is what holds them.
  Remover(RemovalServices services, const FilePath& home, const FilePath& applicationSupport);

  /// Removes what the requests name and nothing else; goes on after an item that fails. Holds the lock of the history
  /// for the whole run. The functions of `checks` and `options` are called on the calling thread.
  Outcome<RemovalReport, RemovalError> remove(const std::vector<RemovalRequest>& requests, const RemovalChecks& checks,
                                              const RemovalOptions& options);

  /// What `remove` would want to know of paths that a person names, in their order: the requests under fresh
  /// identifiers, with size and snapshot as they are now. Rules that cannot be read are left to `remove`, which then
  /// refuses everything. After a stop the last paths are left out.
  std::vector<ReviewOutcome> review(const std::vector<FilePath>& paths, const ReviewOptions& options);

 private:
  std::vector<ReviewOutcome> reviewTogether(RemovalGuard& guard, std::span<const FilePath> paths,
                                            const StopToken& stop);
  ReviewOutcome admitted(RemovalGuard& guard, const FilePath& path, ItemPlaces& places, std::vector<ItemPlace>& opened);
  static ReviewOutcome measured(RemovalGuard& guard, RemovalRequest request, const TreeOutcome& tree);

  RemovalServices services_;
  FilePath home_;
  FilePath applicationSupport_;
};

}  // namespace quorvane
