#include "quorvane/removal/RemovalGuard.h"

#include "quorvane/base/SortUniquely.h"

#include <algorithm>
#include <iterator>

namespace quorvane {

namespace {

/// A place that is known by a link is guarded under both names.
std::vector<FilePath> namesOf(FileSystem& fileSystem, const FilePath& path) {
  std::vector<FilePath> names{standardised(path)};
  if (auto resolved = fileSystem.resolved(names.front())) names.push_back(*std::move(resolved));
  return names;
}

/// What lies in a Trash is removed already.
bool isVolumeTrash(std::string_view component) { return component == ".Trash" || component.starts_with(".Trash-"); }

std::vector<FilePath> canonicalPathsOf(const std::vector<IgnoreRule>& rules) {
  std::vector<FilePath> paths;
  paths.reserve(rules.size());
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
      ignored_(canonicalPathsOf(places.ignoreRules)),
      mountPoints_(std::move(places.mountPoints)) {
  std::ranges::move(namesOf(fileSystem, places.trash), std::back_inserter(ownData_));
  ownObjects_ = objectsAbove(homes_);
  ownObjects_.merge(objectsAbove(ownData_));
  for (const FilePath& own : ownData_)
    if (const auto object = objectAt(own)) ownFolders_.insert(*object);
}

std::optional<RemovalGuard::Object> RemovalGuard::objectAt(const FilePath& folder) const {
  const auto opened = fileSystem_.openStartingFolder(folder);
  if (!opened) return std::nullopt;
  const auto status = fileSystem_.status(opened->number());
  return status ? std::optional(Object{status->device, status->inode}) : std::nullopt;
}

std::set<RemovalGuard::Object> RemovalGuard::objectsAbove(const std::vector<FilePath>& places) const {
  std::set<Object> objects;
  for (FilePath place : places)
    for (; place.bytes != "/"; place = parentOf(place))
      if (const auto object = objectAt(place)) objects.insert(*object);
  return objects;
}

/// Items of one folder follow each other.
bool RemovalGuard::isInOwnObject(const FilePath& folder) {
  if (lastInside_ && lastInside_->first == folder) return lastInside_->second;
  bool isInside = false;
  for (FilePath above = folder; above.bytes != "/" && !isInside; above = parentOf(above)) {
    const auto object = objectAt(above);
    isInside = object && ownFolders_.contains(*object);
  }
  lastInside_ = {folder, isInside};
  return isInside;
}

Outcome<FilePath, RemovalRefusal> RemovalGuard::admitted(const FilePath& path) {
  const bool isStandard = isAbsolute(path.bytes) && path == standardised(path) && path.bytes != "/";
  if (!isStandard) return failure(protectedRefusal());
  const auto folder = resolvedFolder(parentOf(path));
  if (!folder) return failure(refusalOfPath(folder.error()));
  FilePath canonicalPath = joined(*folder, leafOf(path));
  if (isOwn(canonicalPath)) return failure(protectedRefusal());
  if (isIgnored(canonicalPath)) return failure(refusalOf(FileProtectionError::ignored));
  if (holdsAtOrBelow(mountPoints_, canonicalPath)) return failure(mountRefusal());
  return canonicalPath;
}

/// Items of one folder follow each other. Should it become another one meanwhile, a link stands in the way when the
/// item is opened by its canonical path.
Outcome<FilePath, PosixError> RemovalGuard::resolvedFolder(const FilePath& folder) {
  if (lastFolder_ && lastFolder_->first == folder) return lastFolder_->second;
  auto resolved = fileSystem_.resolved(folder);
  if (resolved) lastFolder_ = {folder, *resolved};
  return resolved;
}

bool RemovalGuard::isOwn(const FilePath& canonicalPath) const {
  if (std::ranges::any_of(componentsOf(canonicalPath.bytes), isVolumeTrash)) return true;
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

std::optional<RemovalRefusal> RemovalGuard::refusalOfObject(const FileStatus& object, const FilePath& canonicalPath) {
  const bool isOwnObject = ownObjects_.contains({object.device, object.inode});
  if (isOwnObject || isInOwnObject(parentOf(canonicalPath))) return protectedRefusal();
  if (object.isLink() && leadsToIgnored(canonicalPath)) return refusalOf(FileProtectionError::ignored);
  return std::nullopt;
}

/// A rule for a link names what the link leads to.
bool RemovalGuard::leadsToIgnored(const FilePath& link) const {
  if (ignored_.empty()) return false;
  const auto target = fileSystem_.resolved(link);
  return target && isCovered(*target);
}

}  // namespace quorvane
