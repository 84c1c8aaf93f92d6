#pragma once

#include "quorvane/core/IgnoreRule.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/platform/Trash.h"
#include "quorvane/removal/ItemPlace.h"
#include "quorvane/removal/Remover.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace quorvane {

/// What nobody may remove, and what the rules know of the world at the beginning of a run.
struct GuardedPlaces {
  FilePath home;
  FilePath applicationSupport;
  std::vector<IgnoreRule> ignoreRules = {};
  std::vector<FilePath> mountPoints = {};  ///< sorted
};

/// The rules that hold for whatever is removed, told by its path.
class RemovalGuard {
 public:
  /// Resolves the links in the places now.
  RemovalGuard(FileSystem& fileSystem, GuardedPlaces places);

  /// The path with the links above its last component resolved, if what stands there may be removed.
  Outcome<FilePath, RemovalRefusal> admitted(const FilePath& path) const;

  /// With links resolved.
  const FilePath& home() const { return homes_.back(); }

  /// What speaks against the object that stands at the place of an admitted path: that it is one of the guarded places
  /// under another name, as a bind mount gives it, or a link to something that is ignored.
  std::optional<RemovalRefusal> refusalOfObject(const ItemPlace& place, const FilePath& canonicalPath) const;

 private:
  bool isOwn(const FilePath& canonicalPath) const;
  bool isIgnored(const FilePath& canonicalPath) const;
  bool isCovered(FilePath path) const;
  bool leadsToIgnored(const FilePath& link) const;

  using Object = std::pair<std::int32_t, std::uint64_t>;  ///< device and inode
  static std::set<Object> objectsAbove(FileSystem& fileSystem, const std::vector<FilePath>& places);

  FileSystem& fileSystem_;
  std::vector<FilePath> homes_;    ///< as given, and with links resolved
  std::vector<FilePath> ownData_;  ///< as `homes_`
  std::set<Object> ownObjects_;    ///< the places of `homes_` and `ownData_`, and all folders above
  std::vector<FilePath> ignored_;  ///< sorted
  std::vector<FilePath> mountPoints_;
};

/// The Trash folders that the items of a run would go to: none of them can go into itself, or out of there. Makes those
/// that are missing.
class TrashGuard {
 public:
  TrashGuard(FileSystem& fileSystem, Trash& trash, const FilePath& canonicalHome)
      : fileSystem_(fileSystem), trash_(trash), canonicalHome_(canonicalHome) {}

  /// Whether the item is in, is, or holds its Trash. Where its volume has none nothing is said; the move is refused.
  bool isTrash(const ItemPlace& place, const FilePath& canonicalPath);

 private:
  using Mount = std::pair<std::uint64_t, std::int32_t>;

  std::optional<FilePath> trashFor(const FilePath& canonicalPath);

  FileSystem& fileSystem_;
  Trash& trash_;
  FilePath canonicalHome_;
  std::map<Mount, std::optional<FilePath>> trashes_;
};

/// Why a path could not be opened; something else standing in the place of one of its folders is a change.
RemovalRefusal refusalOfPath(PosixError error);
/// Why a tree that was not seen as a whole, or while nobody changed it, cannot be told from another one.
std::optional<RemovalRefusal> refusalOfUnproved(const TreeMeasurement& tree);

}  // namespace quorvane
