#pragma once

#include "quorvane/core/IgnoreRule.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/removal/ItemPlace.h"
#include "quorvane/removal/Remover.h"

#include <cstdint>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace quorvane {

/// What nobody may remove, and what the rules know of the world at the beginning of a run.
struct GuardedPlaces {
  FilePath home;
  FilePath applicationSupport;
  FilePath trash;  ///< of the home
  std::vector<IgnoreRule> ignoreRules = {};
  std::vector<FilePath> mountPoints = {};  ///< sorted
};

/// The rules that hold for whatever is removed, told by its path.
class RemovalGuard {
 public:
  /// Resolves the links in the places now.
  RemovalGuard(FileSystem& fileSystem, GuardedPlaces places);

  /// The path with the links above its last component resolved, if what stands there may be removed.
  Outcome<FilePath, RemovalRefusal> admitted(const FilePath& path);

  /// What speaks against the object that was found at an admitted path: that it is one of the guarded places,
  /// or in one, under another name, as a bind mount gives it, or a link to something that is ignored.
  std::optional<RemovalRefusal> refusalOfObject(const FileStatus& object, const FilePath& canonicalPath);

 private:
  bool isOwn(const FilePath& canonicalPath) const;
  bool isIgnored(const FilePath& canonicalPath) const;
  bool isCovered(FilePath path) const;
  bool leadsToIgnored(const FilePath& link) const;

  using Object = std::pair<std::int32_t, std::uint64_t>;  ///< device and inode
  std::optional<Object> objectAt(const FilePath& folder) const;
  std::set<Object> objectsAbove(const std::vector<FilePath>& places) const;
  bool isInOwnObject(const FilePath& folder);

  Outcome<FilePath, PosixError> resolvedFolder(const FilePath& folder);

  FileSystem& fileSystem_;
  std::optional<std::pair<FilePath, FilePath>> lastFolder_;  ///< that was resolved, and what it is
  std::vector<FilePath> homes_;                              ///< as given, and with links resolved
  std::vector<FilePath> ownData_;                            ///< the program's own data and the Trash; as `homes_`
  std::set<Object> ownObjects_;  ///< the places of `homes_` and `ownData_`, and all folders above
  std::set<Object> ownFolders_;  ///< those of `ownData_` themselves
  std::optional<std::pair<FilePath, bool>> lastInside_;  ///< a folder that was looked at, and whether it is in one
  std::vector<FilePath> ignored_;                        ///< sorted
  std::vector<FilePath> mountPoints_;
};

/// Why a path could not be opened; something else standing in the place of one of its folders is a change.
RemovalRefusal refusalOfPath(PosixError error);
/// Why a tree that was not seen as a whole, or while nobody changed it, cannot be told from another one.
std::optional<RemovalRefusal> refusalOfUnproved(const TreeMeasurement& tree);

}  // namespace quorvane
