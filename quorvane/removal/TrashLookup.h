#pragma once

#include "quorvane/platform/Trash.h"
#include "quorvane/removal/CleanupMoveJournal.h"
#include "quorvane/removal/DirectoryAnchor.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
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

  /// The folder cannot be trusted or read, or holds more than 20,000 entries: a huge Trash is never walked in full.
  struct Unavailable {};
  /// The items directly in the folder that are the wanted object, by their names; several for hard links of one file.
  struct Files {
    RecordedTrash trash;
    std::vector<std::string> leaves;
  };
  using Lookup = std::variant<Files, Unavailable>;

  /// Where the object of an intent is now, if it is in its Trash.
  Lookup find(const CleanupMoveIntent& intent);

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
  const std::optional<std::vector<Listed>>& listing(TrashFolder& folder);
  std::optional<std::vector<Listed>> list(TrashFolder& folder);

  const MoveServices& services_;
  std::map<FilePath, Outcome<Opened, PosixError>> opened_;
  std::map<std::string, std::optional<std::vector<Listed>>> listings_;  ///< by what the folder is
};

}  // namespace quorvane
