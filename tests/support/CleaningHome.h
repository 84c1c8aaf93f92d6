#pragma once

#include "quorvane/removal/Remover.h"
#include "tests/support/ScanHome.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// The system's volumes, with mount points that a test makes up.
class MadeVolumes final : public Volumes {
 public:
  Outcome<std::vector<FilePath>, PosixError> made = std::vector<FilePath>{};

  Outcome<VolumeIdentity, PosixError> identity(int descriptor) override { return real_->identity(descriptor); }
  Outcome<VolumeCapacity, PosixError> capacity(const FilePath& path) override { return real_->capacity(path); }
  Outcome<std::vector<FilePath>, PosixError> mountPoints() override { return made; }

 private:
  std::unique_ptr<Volumes> real_ = makeSystemVolumes();
};

/// A home of a test's own with everything that removing needs: the real Trash and a history, both inside of it.
class CleaningHome : public ScanHome {
 public:
  explicit CleaningHome(HomeLayout layout = HomeLayout::linux);

  /// The request for what stands at this place, as a review would make it; without a snapshot where nothing stands.
  RemovalRequest request(std::string_view relative);
  std::vector<RemovalRequest> requests(const std::vector<std::string>& relatives);

  /// Removes; ends the test program when the whole run is refused.
  RemovalReport remove(const std::vector<RemovalRequest>& requests, const RemovalOptions& options = {},
                       const RemovalChecks& checks = {});

  /// Ends the threads of the walker, which starts new ones when it needs them: a process that is to fork may have no
  /// other thread, since that could hold a lock that nobody would ever open in the child.
  void endWalkerThreads();

  /// The entries of the history as it stands on the disk, newest first.
  std::vector<CleaningHistoryEntry> recorded();

  /// The paths of everything in the home, below it.
  std::set<std::string> everything() const;
  bool isInTrash(std::string_view name) const { return holds(".local/share/Trash/files/" + std::string(name)); }
  bool holds(std::string_view relative) const { return folder.holds(relative); }
  /// Whether something stands there, were it a link that leads nowhere.
  bool hasEntry(std::string_view relative) const;

  MadeVolumes madeVolumes;
  std::unique_ptr<Trash> trash;
  MoveServices moves;
  HistoryStore history;
  Remover remover;
};

/// "key category" of each failure by the path below the home that was asked for; "moved" and "would move" for others.
std::map<std::string, std::string> fates(const CleaningHome& home, const std::vector<RemovalRequest>& requests,
                                         const RemovalReport& report);

std::string textOf(const RemovalRefusal& refusal);

}  // namespace quorvane
