#pragma once

#include "quorvane/base/ThreadAnnotations.h"
#include "quorvane/core/InodeSet.h"
#include "quorvane/core/TreeDigest.h"
#include "quorvane/core/TreeWalker.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The parts of a walk that know no threads: one tree, one folder on the way, and what is done with a folder.

namespace quorvane {

/// What all trees of one walk share.
struct WalkState {
  std::atomic<bool> isCancelled = false;
  std::atomic<std::int64_t> entryCount = 0;
};

/// What is gathered of one tree. The threads add to it folder by folder.
class WalkTree {
 public:
  WalkTree(std::size_t treeIndex, const TreeRoot& treeRoot, const WalkRequest& walkRequest, WalkState& state)
      : index(treeIndex), root(treeRoot), request(walkRequest), state_(state) {}

  /// What one folder, or the root alone, adds to the sums.
  struct Share {
    std::int64_t allocatedBytes = 0;
    std::int64_t entryCount = 0;
    FileTime newestModification;
    std::vector<std::uint64_t> hardLinked;      ///< inodes with more than one name, and what they take:
    std::vector<std::int64_t> hardLinkedBytes;  ///< counted only where the tree meets them first
    bool changed = false;
    std::int64_t watchedCount = 0;

    void add(const FileStatus& status);
    void clear();
  };

  void add(const Share& share);
  void addUnreadable(std::string path, PosixError reason);
  void addMount(std::string path);
  void addChange();
  /// Makes the root what the measurement describes; called once, before anything is added.
  void begin(const FileStatus& root);
  void fail(PosixError reason);
  void finish(const Sha256Digest* digest);

  bool isStopped() const { return request.stop.stopRequested() || state_.isCancelled.load(std::memory_order_relaxed); }
  TreeOutcome outcome();

  const std::size_t index;
  const TreeRoot& root;
  const WalkRequest& request;
  FileStatus rootStatus;  ///< written before the first folder is shared

 private:
  WalkState& state_;
  Mutex mutex_;
  TreeMeasurement measurement_ QV_GUARDED_BY(mutex_);
  InodeSet hardLinked_ QV_GUARDED_BY(mutex_);
  std::optional<PosixError> failure_ QV_GUARDED_BY(mutex_);
};

/// A folder whose subfolders are not all finished. It lives until they are, and its descriptor until all are open.
struct WalkFolder {
  struct Child {
    std::uint32_t nameOffset = 0;
    std::uint32_t nameLength = 0;
    Sha256Digest digest{};
  };

  WalkTree& tree;
  WalkFolder* parent = nullptr;
  std::uint32_t place = 0;  ///< among the parent's children
  FileDescriptor descriptor;
  FileStatus status;
  Sha256Digest entriesDigest{};
  std::string names;            ///< of the children, a NUL behind each
  std::vector<Child> children;  ///< the subfolders, in the order of their names
  std::atomic<std::uint32_t> unopened = 0;
  std::atomic<std::uint32_t> unfinished = 1;  ///< its subfolders, and 1 while it is itself being read

  WalkFolder(WalkTree& ofTree, WalkFolder* parentFolder, std::uint32_t placeInParent)
      : tree(ofTree), parent(parentFolder), place(placeInParent) {}

  std::string_view nameOf(const Child& child) const { return {names.data() + child.nameOffset, child.nameLength}; }
  /// The path from the root of the tree to this folder, and on to `leaf` when there is one.
  std::string relativePath(std::string_view leaf = {}) const;
};

/// Reads folders for one thread, with buffers that are used again.
class FolderReader {
 public:
  explicit FolderReader(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  /// Begins a tree. The folder to read and go on with; nothing when the tree is already finished.
  std::unique_ptr<WalkFolder> openRoot(WalkTree& tree);

  /// Reads what is in a folder that was opened as a root.
  void read(WalkFolder& folder);

  /// Opens and reads one subfolder; nothing when it cannot be entered, which the tree then knows.
  std::unique_ptr<WalkFolder> openChild(WalkFolder& parent, std::uint32_t place);

  /// One part of the folder is done: itself or one of its subfolders. With the last one it is finished and goes, and
  /// so do the folders above that waited for it only. True when that finished the tree.
  bool finishPart(WalkFolder* folder);

 private:
  void account(WalkFolder& folder);
  void keepChildren(WalkFolder& folder);
  bool isElsewhere(const WalkTree& tree, const FileStatus& status) const;
  Sha256Digest digestOf(const WalkFolder& folder);

  FileSystem& fileSystem_;
  FolderListing listing_;
  TreeDigest digest_;
  WalkTree::Share share_;
  std::vector<std::uint32_t> order_;
  std::vector<TreeDigest::Child> finished_;
};

}  // namespace quorvane
