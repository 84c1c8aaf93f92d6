#pragma once

#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/removal/HistoryStore.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TempFolder.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// A home of a test's own with everything that removing needs: a real Trash, a real history, a clock that stands
/// at the present moment, and a file system that can be made to fail.
class RemovalHome {
 public:
  RemovalHome();

  FilePath at(std::string_view relative) const { return temp_.at(relative); }
  const TempFolder& folder() const { return temp_; }
  const ApplicationFolders& folders() const { return folders_; }
  FilePath historyFile() const { return at("data/Quorvane/history.json"); }

  FailingFileSystem& files() { return failing_; }
  FileSystem& realFiles() { return *real_; }
  Volumes& volumes() { return *volumes_; }
  Trash& trash() { return *trash_; }
  RandomSource& random() { return random_; }
  ManualClock& clock() { return clock_; }
  const MoveServices& services() const { return services_; }

  /// A store that has read nothing yet, as a new process has.
  std::unique_ptr<HistoryStore> newStore();

  /// What a request for this path is.
  CleanupMoveJournal::Request request(std::string_view relative);

  /// Moves these to the Trash in one transaction; ends the test program where the history cannot be written.
  std::vector<CleaningHistoryEntry> clean(const std::vector<std::string>& relatives);

  /// The first item of each entry of the history as it stands on the disk, newest first.
  std::vector<CleaningHistoryItem> recorded();

  /// The names of the items in the home Trash, and of the notes there; sorted.
  std::vector<std::string> trashed() const;
  std::vector<std::string> notes() const;

 private:
  TempFolder temp_;
  ApplicationFolders folders_;
  std::unique_ptr<FileSystem> real_ = makeSystemFileSystem();
  FailingFileSystem failing_{*real_};
  std::unique_ptr<Volumes> volumes_ = makeSystemVolumes();
  SystemRandomSource random_;
  std::unique_ptr<Trash> trash_;
  ManualClock clock_;
  MoveServices services_;
};

/// References to every item of these entries, in their order.
std::vector<RecoveryReference> referencesTo(const std::vector<CleaningHistoryEntry>& entries);

}  // namespace quorvane
