#include "quorvane/core/TreeWalk.h"

#include <algorithm>

namespace quorvane {

namespace {

constexpr std::size_t mostPathsKept = 1000;
constexpr std::int64_t entriesBetweenReports = 4096;

bool meansChange(PosixError error) { return error.isMissing() || error.isOtherKind(); }

}  // namespace

void WalkTree::Share::add(const FileStatus& status) {
  ++entryCount;
  newestModification = std::max(newestModification, status.modified);
  if (status.linkCount > 1 && !status.isFolder()) {
    hardLinked.push_back(status.inode);
    hardLinkedBytes.push_back(status.allocated);
  } else {
    allocatedBytes += status.allocated;
  }
}

void WalkTree::Share::clear() {
  allocatedBytes = entryCount = 0;
  newestModification = {};
  hardLinked.clear();
  hardLinkedBytes.clear();
  changed = false;
  watchedCount = 0;
}

void WalkTree::add(const Share& share) {
  const std::int64_t before = state_.entryCount.fetch_add(share.entryCount, std::memory_order_relaxed);
  const std::int64_t now = before + share.entryCount;
  if (request.advances && before / entriesBetweenReports != now / entriesBetweenReports) request.advances(now);
  const MutexLock lock(mutex_);
  measurement_.allocatedBytes += share.allocatedBytes;
  measurement_.entryCount += share.entryCount;
  measurement_.newestModification = std::max(measurement_.newestModification, share.newestModification);
  measurement_.changedWhileRead |= share.changed;
  measurement_.watchedCount += share.watchedCount;
  for (std::size_t i = 0; i < share.hardLinked.size(); ++i)
    if (hardLinked_.insert(share.hardLinked[i])) measurement_.allocatedBytes += share.hardLinkedBytes[i];
}

void WalkTree::addUnreadable(std::string path, PosixError reason) {
  const MutexLock lock(mutex_);
  if (measurement_.unreadableCount++ == 0) measurement_.unreadableReason = reason;
  if (measurement_.unreadable.size() < mostPathsKept) measurement_.unreadable.push_back(std::move(path));
}

void WalkTree::addMount(std::string path) {
  const MutexLock lock(mutex_);
  if (measurement_.mountsInside.size() < mostPathsKept) measurement_.mountsInside.push_back(std::move(path));
}

void WalkTree::addChange() {
  const MutexLock lock(mutex_);
  measurement_.changedWhileRead = true;
}

void WalkTree::begin(const FileStatus& status) {
  rootStatus = status;
  const MutexLock lock(mutex_);
  measurement_.root = status;
}

void WalkTree::fail(PosixError reason) {
  const MutexLock lock(mutex_);
  if (!failure_) failure_ = reason;
}

void WalkTree::finish(const Sha256Digest* digest) {
  const bool wasStopped = isStopped();
  const MutexLock lock(mutex_);
  if (wasStopped && !failure_) failure_ = cancelledError();
  if (digest && request.takesDigest) measurement_.digest = hexText(*digest);
}

TreeOutcome WalkTree::outcome() {
  const MutexLock lock(mutex_);
  if (failure_) return failure(*failure_);
  std::ranges::sort(measurement_.unreadable);
  std::ranges::sort(measurement_.mountsInside);
  return measurement_;
}

std::string WalkFolder::relativePath(std::string_view leaf) const {
  std::vector<std::string_view> parts;
  if (!leaf.empty()) parts.push_back(leaf);
  for (const WalkFolder* folder = this; folder->parent; folder = folder->parent)
    parts.push_back(folder->parent->nameOf(folder->parent->children[folder->place]));
  std::string path;
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    if (!path.empty()) path += '/';
    path += *part;
  }
  return path;
}

std::unique_ptr<WalkFolder> FolderReader::openRoot(WalkTree& tree) {
  const char* name = tree.root.name.c_str();
  const auto status = fileSystem_.status(tree.root.folder, name);
  if (!status) {
    tree.fail(status.error());
    return nullptr;
  }
  if (!status->isFolder()) {
    tree.begin(*status);
    share_.clear();
    share_.add(*status);
    tree.add(share_);
    const Sha256Digest digest = digest_.ofSingleObject(*status);
    tree.finish(&digest);
    return nullptr;
  }
  auto descriptor = fileSystem_.openFolder(tree.root.folder, name);
  const auto opened = descriptor ? fileSystem_.status(descriptor->number()) : Outcome<FileStatus, PosixError>(*status);
  if (!descriptor || !opened) {
    tree.fail(descriptor ? opened.error() : descriptor.error());
    return nullptr;
  }
  tree.begin(*opened);
  auto folder = std::make_unique<WalkFolder>(tree, nullptr, 0);
  folder->descriptor = *std::move(descriptor);
  folder->status = *opened;
  return folder;
}

std::unique_ptr<WalkFolder> FolderReader::openChild(WalkFolder& parent, std::uint32_t place) {
  WalkTree& tree = parent.tree;
  const WalkFolder::Child& child = parent.children[place];
  if (tree.isStopped()) return nullptr;
  auto descriptor = fileSystem_.openFolder(parent.descriptor.number(), parent.names.data() + child.nameOffset);
  const auto status = descriptor ? fileSystem_.status(descriptor->number())
                                 : Outcome<FileStatus, PosixError>(failure(descriptor.error()));
  if (!status) {
    if (meansChange(status.error())) {
      tree.addChange();
    } else {
      tree.addUnreadable(parent.relativePath(parent.nameOf(child)), status.error());
    }
    return nullptr;
  }
  if (isElsewhere(tree, *status)) {
    tree.addMount(parent.relativePath(parent.nameOf(child)));
    return nullptr;
  }
  auto folder = std::make_unique<WalkFolder>(tree, &parent, place);
  folder->descriptor = *std::move(descriptor);
  folder->status = *status;
  read(*folder);
  return folder;
}

bool FolderReader::finishPart(WalkFolder* folder) {
  while (folder->unfinished.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    const std::unique_ptr<WalkFolder> finished(folder);
    WalkTree& tree = finished->tree;
    const Sha256Digest digest = tree.request.takesDigest ? digestOf(*finished) : Sha256Digest{};
    folder = finished->parent;
    if (!folder) {
      tree.finish(&digest);
      return true;
    }
    folder->children[finished->place].digest = digest;
  }
  return false;
}

void FolderReader::read(WalkFolder& folder) {
  const auto listed = fileSystem_.list(folder.descriptor.number(), listing_);
  if (!listed) folder.tree.addUnreadable(folder.relativePath(), listed.error());
  share_.clear();
  share_.add(folder.status);
  account(folder);
  folder.tree.add(share_);
  if (folder.tree.request.takesDigest) folder.entriesDigest = digest_.ofEntries(listing_);
  keepChildren(folder);
}

void FolderReader::account(WalkFolder& folder) {
  const std::span<const std::string_view> watched = folder.tree.request.watchedNames;
  for (const FolderEntry& entry : listing_.entries()) {
    if (std::ranges::find(watched, listing_.nameOf(entry)) != watched.end()) ++share_.watchedCount;
    if (entry.isFolder) continue;
    if (entry.error == 0 && !entry.status.isFolder()) {
      share_.add(entry.status);
    } else if (entry.error == 0 || meansChange({entry.error})) {
      share_.changed = true;
    } else {
      folder.tree.addUnreadable(folder.relativePath(listing_.nameOf(entry)), {entry.error});
    }
  }
}

void FolderReader::keepChildren(WalkFolder& folder) {
  const auto& entries = listing_.entries();
  order_.clear();
  for (std::uint32_t i = 0; i < entries.size(); ++i)
    if (entries[i].isFolder) order_.push_back(i);
  std::ranges::sort(order_, {}, [&](std::uint32_t i) { return listing_.nameOf(entries[i]); });
  folder.children.reserve(order_.size());
  for (const std::uint32_t i : order_) {
    const std::string_view name = listing_.nameOf(entries[i]);
    folder.children.push_back(
        {static_cast<std::uint32_t>(folder.names.size()), static_cast<std::uint32_t>(name.size())});
    (folder.names += name) += '\0';
  }
  const auto count = static_cast<std::uint32_t>(folder.children.size());
  folder.unopened.store(count, std::memory_order_relaxed);
  folder.unfinished.store(count + 1, std::memory_order_relaxed);
  if (count == 0) folder.descriptor.close();
}

bool FolderReader::isElsewhere(const WalkTree& tree, const FileStatus& status) const {
  return status.device != tree.rootStatus.device || status.mount != tree.rootStatus.mount;
}

Sha256Digest FolderReader::digestOf(const WalkFolder& folder) {
  finished_.clear();
  for (const WalkFolder::Child& child : folder.children) finished_.push_back({folder.nameOf(child), child.digest});
  return digest_.ofFolder(folder.status, folder.parent == nullptr, folder.entriesDigest, finished_);
}

}  // namespace quorvane
