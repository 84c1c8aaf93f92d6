#include "quorvane/removal/RemovalGuard.h"

#include "quorvane/base/SortUniquely.h"

#include <algorithm>

namespace quorvane {

namespace {

/// A place that is known by a link is guarded under both names.
std::vector<FilePath> namesOf(FileSystem& fileSystem, const FilePath& path) {
  std::vector<FilePath> names{standardised(path)};
  if (auto resolved = fileSystem.resolved(names.front())) names.push_back(*std::move(resolved));
  return names;
}

std::vector<FilePath> canonicalPathsOf(const std::vector<IgnoreRule>& rules) {
  std::vector<FilePath> paths;
  for (const IgnoreRule& rule : rules) paths.push_back(rule.canonicalPath);
  sortUniquely(paths);
  return paths;
}

}  // namespace

RemovalRefusal refusalOfPath(PosixError error) {
  if (error.isOtherKind()) return refusalOf(FileProtectionError::changed);
  return refusalOf(error);
}

std::optional<RemovalRefusal> refusalOfUnproved(const TreeMeasurement& tree) {
  if (!tree.mountsInside.empty()) return mountRefusal();
  if (tree.unreadableCount > 0) return refusalOf(tree.unreadableReason);
  if (tree.changedWhileRead) return refusalOf(FileProtectionError::changed);
  return std::nullopt;
}

RemovalGuard::RemovalGuard(FileSystem& fileSystem, GuardedPlaces places)
    : fileSystem_(fileSystem),
      homes_(namesOf(fileSystem, places.home)),
      ownData_(namesOf(fileSystem, places.applicationSupport)),
      ownObjects_(objectsAbove(fileSystem, homes_)),
      ignored_(canonicalPathsOf(places.ignoreRules)),
      mountPoints_(std::move(places.mountPoints)) {
  ownObjects_.merge(objectsAbove(fileSystem, ownData_));
}

std::set<RemovalGuard::Object> RemovalGuard::objectsAbove(FileSystem& fileSystem, const std::vector<FilePath>& places) {
  std::set<Object> objects;
  for (FilePath place : places) {
    for (; place.bytes != "/"; place = parentOf(place)) {
      const auto folder = fileSystem.openStartingFolder(place);
      const auto status = folder ? fileSystem.status(folder->number()) : failure(folder.error());
      if (status) objects.emplace(status->device, status->inode);
    }
  }
  return objects;
}

Outcome<FilePath, RemovalRefusal> RemovalGuard::admitted(const FilePath& path) const {
  const bool isStandard = isAbsolute(path.bytes) && path == standardised(path) && path.bytes != "/";
  if (!isStandard) return failure(protectedRefusal());
  const auto folder = fileSystem_.resolved(parentOf(path));
  if (!folder) return failure(refusalOfPath(folder.error()));
  FilePath canonicalPath = joined(*folder, leafOf(path));
  if (isOwn(canonicalPath)) return failure(protectedRefusal());
  if (isIgnored(canonicalPath)) return failure(refusalOf(FileProtectionError::ignored));
  if (holdsAtOrBelow(mountPoints_, canonicalPath)) return failure(mountRefusal());
  return canonicalPath;
}

bool RemovalGuard::isOwn(const FilePath& canonicalPath) const {
  const auto holds = [&](const FilePath& place) { return isAtOrBelow(place, canonicalPath); };
  const auto touches = [&](const FilePath& place) { return overlap(place, canonicalPath); };
  return std::ranges::any_of(homes_, holds) || std::ranges::any_of(ownData_, touches);
}

bool RemovalGuard::isIgnored(const FilePath& canonicalPath) const {
  return !ignored_.empty() && (holdsAtOrBelow(ignored_, canonicalPath) || isCovered(canonicalPath));
}

bool RemovalGuard::isCovered(FilePath path) const {
  while (!std::ranges::binary_search(ignored_, path)) {
    if (path.bytes == "/") return false;
    path = parentOf(path);
  }
  return true;
}

std::optional<RemovalRefusal> RemovalGuard::refusalOfObject(const ItemPlace& place,
                                                            const FilePath& canonicalPath) const {
  const auto status = fileSystem_.status(place.folder.number(), place.name.c_str());
  if (!status) return refusalOfPath(status.error());
  if (ownObjects_.contains({status->device, status->inode})) return protectedRefusal();
  if (status->isLink() && leadsToIgnored(canonicalPath)) return refusalOf(FileProtectionError::ignored);
  return std::nullopt;
}

/// A rule for a link names what the link leads to.
bool RemovalGuard::leadsToIgnored(const FilePath& link) const {
  if (ignored_.empty()) return false;
  const auto target = fileSystem_.resolved(link);
  return target && isCovered(*target);
}

bool TrashGuard::isTrash(const ItemPlace& place, const FilePath& canonicalPath) {
  const auto folder = fileSystem_.status(place.folder.number());
  if (!folder) return false;
  const auto [known, isNew] = trashes_.try_emplace({folder->mount, folder->device});
  if (isNew) known->second = trashFor(canonicalPath);
  return known->second && overlap(*known->second, canonicalPath);
}

/// The folder around the one that holds the items has their notes, unless that is the home itself.
std::optional<FilePath> TrashGuard::trashFor(const FilePath& canonicalPath) {
  const auto trash = trash_.folderFor(canonicalPath);
  if (!trash) return std::nullopt;
  const FilePath& directory = (*trash)->directory();
  const FilePath around = parentOf(directory);
  return isAtOrBelow(canonicalHome_, around) ? directory : around;
}

}  // namespace quorvane
