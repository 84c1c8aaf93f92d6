#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/Outcome.h"
#include "quorvane/base/StopToken.h"
#include "quorvane/core/FileIdentity.h"
#include "quorvane/platform/FileSystem.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// A tree to be measured: the object `name` in an open folder, links not followed.
struct TreeRoot {
  int folder = -1;   ///< stays open until the walk is over
  std::string name;  ///< one component
};

/// What one pass over a tree found. With anything unreadable, the sums are lower bounds.
struct TreeMeasurement {
  FileStatus root;
  std::int64_t allocatedBytes = 0;      ///< the folders' own blocks included, each object once: what `du` counts
  std::int64_t entryCount = 0;          ///< objects seen, the root included
  FileTime newestModification;          ///< of everything seen, the root included
  std::string digest;                   ///< 64 hexadecimal digits; empty when not asked for
  std::vector<std::string> unreadable;  ///< relative to the root ("" is the root itself); the first thousand
  std::int64_t unreadableCount = 0;
  PosixError unreadableReason;            ///< of the first of them
  std::vector<std::string> mountsInside;  ///< relative to the root: other mounts, not entered; the first thousand
  bool changedWhileRead = false;          ///< something vanished or became something else during the walk
  std::int64_t watchedCount = 0;          ///< of the entries in it that have one of the watched names

  bool isLowerBound() const { return unreadableCount > 0 || !mountsInside.empty() || changedWhileRead; }
};

/// The root cannot be read at all (its own reason), or the walk was stopped (ECANCELED).
using TreeOutcome = Outcome<TreeMeasurement, PosixError>;

/// What a walk is to do, and whom to tell. The functions are called on the walking threads, without a lock held.
struct WalkRequest {
  bool takesDigest = true;
  std::span<const std::string_view> watchedNames;  ///< of entries to be counted; outlives the walk
  StopToken stop;
  /// Before the tree with this index is begun. May wait; false stops the walk.
  std::function<bool(std::size_t)> begins;
  /// After the tree with this index is measured. Trees may end in another order than they began.
  std::function<void(std::size_t, const TreeOutcome&)> ends;
  /// Now and then, with the number of objects seen in all trees so far.
  std::function<void(std::int64_t)> advances;
};

/// Measures trees with one pass each, on all cores at once. Follows no link at any level, enters no other mount, and
/// needs memory for the folders on the way and not for the files.
class TreeWalker {
 public:
  explicit TreeWalker(FileSystem& fileSystem);
  ~TreeWalker();
  TreeWalker(const TreeWalker&) = delete;
  TreeWalker& operator=(const TreeWalker&) = delete;

  /// One outcome for each root, in their order. One call at a time; the calling thread works along until all are done.
  std::vector<TreeOutcome> measure(const std::vector<TreeRoot>& roots, const WalkRequest& request);

 private:
  class Pool;
  std::unique_ptr<Pool> pool_;
};

}  // namespace quorvane
