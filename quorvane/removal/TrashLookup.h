#pragma once

#include "quorvane/platform/Trash.h"
#include "quorvane/removal/CleanupMoveJournal.h"
#include "quorvane/removal/DirectoryAnchor.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quorvane {

/// A Trash folder that a record names, opened and compared with what the record knows of it.
struct RecordedTrash {
  std::shared_ptr<TrashFolder> folder;
  AnchorMatch volume = AnchorMatch::exact;  ///< never `none`
};

/// Looks into the Trash folders that records name. Each folder is opened and listed at most once, so it belongs to one
/// moment, and to one thread.
class TrashLookup {
 public:
  /// Everything handed over outlives the lookup.
  explicit TrashLookup(const MoveServices& services) : services_(services) {}

  /// The recorded folder, as long as it is still the same one: ESTALE when the anchor tells that it is another. A
  /// record without an anchor is believed by its path alone.
  Outcome<RecordedTrash, PosixError> open(const FilePath& directory,
                                          const std::optional<CleanupDirectoryAnchor>& recorded);

  /// From now on `find` passes over what stands at this path: another record has it. Hard links of one file are one
  /// object under several names.
  void claim(const FilePath& trashed) { claimed_.insert(trashed); }

  /// A move that was announced, and may have happened.
  struct Announced {
    const CleanupMoveIntent& intent;
    std::string name;  ///< of the item, where it came from
    Uuid move;
  };
  struct Found {
    RecordedTrash trash;
    std::optional<std::string> leaf;  ///< of the item; nothing where it is not in its Trash
  };
  /// Looks for the item of a move in its Trash: first under the names that the Trash gives, then under all that there
  /// are. Nothing where that cannot be told: the folder cannot be trusted or read, or the item has none of those names
  /// and the folder more than 20,000 entries. A huge Trash is never listed in full.
  std::optional<Found> find(const Announced& announced);

  /// The folders that were opened so far.
  std::vector<std::shared_ptr<TrashFolder>> folders() const;

 private:
  struct Listed {
    std::string leaf;
    FileIdentity identity;
  };
  struct Opened {
    std::shared_ptr<TrashFolder> folder;
    std::optional<CleanupDirectoryAnchor> anchor;
  };

  Outcome<Opened, PosixError> opened(const FilePath& directory);
  std::optional<std::string> leafAmongExpected(const RecordedTrash& trash, const Announced& announced);
  bool isFree(const RecordedTrash& trash, const std::string& leaf) const;
  const std::optional<std::vector<Listed>>& listing(TrashFolder& folder);
  std::optional<std::vector<Listed>> list(TrashFolder& folder);

  const MoveServices& services_;
  std::map<FilePath, Outcome<Opened, PosixError>> opened_;
  std::set<FilePath> claimed_;
  std::map<std::string, std::optional<std::vector<Listed>>> listings_;  ///< by what the folder is
};

}  // namespace quorvane
